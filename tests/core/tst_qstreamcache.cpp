#include "core/sprites/imagecodecs.h"
#include "core/sprites/qstreamcache.h"
#include "core/sprites/qstreamcachefilter.h"
#include "spritesets.h"

#include <QFileInfo>
#include <QRandomGenerator>
#include <QtTest>

namespace {

/** The CRC as its definition says, one bit at a time, from any start. */
quint64 bitwiseCrc(const QByteArray &bytes, quint64 crc)
{
    for (const char c : bytes) {
        crc ^= uchar(c);
        for (int bit = 0; bit < 8; ++bit)
            crc = (crc & 1) ? (crc >> 1) ^ 0x95AC9329AC4BC9B5ull : crc >> 1;
    }
    return crc;
}

QByteArray blob(int size, int seed)
{
    QByteArray bytes(size, Qt::Uninitialized);
    QRandomGenerator random{quint32(seed)};
    for (char &c : bytes)
        c = char(random.bounded(4) + 'a');
    return bytes;
}

} // namespace

class tst_QStreamCache : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void hashIsTheReflectedCrc64()
    {
        // The bitwise form is anchored to the published check value of this
        // polynomial, which starts from 0.
        QCOMPARE(bitwiseCrc(QByteArrayLiteral("123456789"), 0), Q_UINT64_C(0xE9C6D914C4B8D9CA));
        // The store starts from all ones and doesn't invert at the end.
        QCOMPARE(QStreamCache::hash(QByteArray()), ~quint64(0));
        for (const QByteArray &bytes : {QByteArrayLiteral("123456789"), QByteArray(1, '\0'), blob(1000, 3)})
            QCOMPARE(QStreamCache::hash(bytes), bitwiseCrc(bytes, ~quint64(0)));
    }

    void storesAndGivesBack_data()
    {
        QTest::addColumn<int>("mode");
        QTest::addColumn<bool>("compress");
        QTest::newRow("memory") << int(QStreamCache::Memory) << false;
        QTest::newRow("memory, compressed") << int(QStreamCache::Memory) << true;
        QTest::newRow("disk") << int(QStreamCache::Disk) << false;
        QTest::newRow("disk, compressed") << int(QStreamCache::Disk) << true;
    }

    void storesAndGivesBack()
    {
        QFETCH(int, mode);
        QFETCH(bool, compress);
        QStreamCache store(QStringLiteral("mugenspr"), mode, compress, 9);
        QCOMPARE(store.mode(), mode);
        const QImage image = SpriteSets::lowIndexes(37, 20, 3);
        const QByteArray pixels = imagePixels(image);
        const QByteArray rle8 = encodeRle8(image);

        QStreamCacheEntry *raw = store.add(pixels, QStreamCacheFilter::Raw, SpriteSets::infoOf(image));
        QStreamCacheEntry *encoded = store.add(rle8, QStreamCacheFilter::RLE8, SpriteSets::infoOf(image));
        QCOMPARE(store.count(), 2);
        QCOMPARE(store.decoded(raw), pixels);
        QCOMPARE(store.decoded(encoded), pixels);
        QCOMPARE(store.filterOf(encoded), int(QStreamCacheFilter::RLE8));
        QCOMPARE(raw->size(), quint32(pixels.size()));
        // Encoded forms stay as they came, so that a save can copy them.
        QCOMPARE(store.raw(encoded), rle8);
        // Only raw pixels are compressed, and only when asked.
        if (compress) {
            QCOMPARE(store.raw(raw), qCompress(pixels, 9));
            QVERIFY(raw->storedSize() < raw->size());
        } else {
            QCOMPARE(store.raw(raw), pixels);
        }
        // Hashes wait until someone compares.
        QCOMPARE(encoded->hash(), quint64(0));
        if (mode == QStreamCache::Disk) {
            QCOMPARE(encoded->position(), raw->storedSize());
            QCOMPARE(QFileInfo(store.fileName()).size(), qint64(raw->storedSize() + encoded->storedSize()));
        }
        // No entry, an unknown filter and no bytes read as nothing.
        QVERIFY(store.raw(nullptr).isEmpty());
        QVERIFY(store.decoded(nullptr).isEmpty());
        QCOMPARE(store.filterOf(nullptr), 0);
        QVERIFY(store.decoded(store.add(QByteArray("abc"), 9, SpriteSets::infoOf(image))).isEmpty());
        QVERIFY(store.decoded(store.add(QByteArray(), QStreamCacheFilter::RLE8, SpriteSets::infoOf(image))).isEmpty());
        QVERIFY(!store.replace(nullptr, QByteArray("x"), 0, SpriteSets::infoOf(image)));
    }

    void releasesCompactTheFile_data()
    {
        QTest::addColumn<int>("mode");
        QTest::addColumn<bool>("inOneGo");
        QTest::newRow("disk, one by one") << int(QStreamCache::Disk) << false;
        QTest::newRow("disk, in one go") << int(QStreamCache::Disk) << true;
        QTest::newRow("memory, in one go") << int(QStreamCache::Memory) << true;
    }

    void releasesCompactTheFile()
    {
        QFETCH(int, mode);
        QFETCH(bool, inOneGo);
        QStreamCache store(QStringLiteral("mugenspr"), mode);
        QStreamCache other(QStringLiteral("mugenspr"), mode);
        QList<QStreamCacheEntry *> entries;
        QList<QByteArray> blobs;
        for (int i = 0; i < 6; ++i) {
            blobs.append(blob(100 + i * 10, i));
            entries.append(store.add(blobs.last(), 0, QImageInfo()));
        }
        const auto positions = [&](const QList<int> &which) {
            QList<quint32> list;
            for (const int i : which)
                list.append(entries[i]->position());
            return list;
        };
        const bool disk = mode == QStreamCache::Disk;
        // The second and the fourth go, and everything behind each moves up
        // by its size; a null entry and another store's are ignored.
        QStreamCacheEntry *foreign = other.add(blob(50, 9), 0, QImageInfo());
        const QList<QStreamCacheEntry *> going{entries[3], nullptr, entries[1], foreign};
        if (inOneGo) {
            store.release(going);
        } else {
            for (QStreamCacheEntry *entry : going)
                store.release(entry);
        }
        QCOMPARE(QList<int>({store.count(), other.count()}), QList<int>({4, 1}));
        for (int i : {0, 2, 4, 5})
            QCOMPARE(store.raw(entries[i]), blobs[i]);
        if (disk)
            QCOMPARE(positions({0, 2, 4, 5}), QList<quint32>({0, 100, 220, 360}));
        // The last written goes: no other entry moves.
        store.release(entries[5]);
        if (disk)
            QCOMPARE(positions({0, 2, 4}), QList<quint32>({0, 100, 220}));
        // A replacement leaves its old place and goes to the end.
        const QByteArray bigger = blob(500, 9);
        QVERIFY(store.replace(entries[0], bigger, 0, QImageInfo()));
        QCOMPARE(store.raw(entries[0]), bigger);
        QCOMPARE(store.raw(entries[4]), blobs[4]);
        if (disk) {
            QCOMPARE(positions({2, 4, 0}), QList<quint32>({0, 120, 260}));
            QCOMPARE(QFileInfo(store.fileName()).size(), qint64(120 + 140 + 500));
        }
        // An entry given back twice is left alone the second time.
        store.release(entries[1]);
        QCOMPARE(store.count(), 3);
        // The entries went back to the pool: the next ones reuse them, cleared.
        QStreamCacheEntry *again = store.add(QByteArray(), 0, QImageInfo());
        QVERIFY(again == entries[1] || again == entries[3] || again == entries[5]);
        QCOMPARE(again->hash(), quint64(0));
        store.clear();
        QCOMPARE(store.count(), 0);
        QCOMPARE(QFileInfo(store.fileName()).size(), qint64(0));
    }

    void same_data()
    {
        QTest::addColumn<int>("mode");
        QTest::newRow("memory") << int(QStreamCache::Memory);
        QTest::newRow("disk") << int(QStreamCache::Disk);
    }

    void same()
    {
        QFETCH(int, mode);
        QStreamCache store(QStringLiteral("mugenspr"), mode, true);
        const QImage image = SpriteSets::lowIndexes(30, 9, 2);
        const QImageInfo info = SpriteSets::infoOf(image);
        QStreamCacheEntry *raw = store.add(imagePixels(image), 0, info);
        QStreamCacheEntry *rle8 = store.add(encodeRle8(image), QStreamCacheFilter::RLE8, info);
        QStreamCacheEntry *lz5 = store.add(encodeLz5(image, true), QStreamCacheFilter::LZ5, info);
        QStreamCacheEntry *other = store.add(encodeRle8(SpriteSets::lowIndexes(30, 9, 5)), QStreamCacheFilter::RLE8, info);

        // One image in three encodings.
        QVERIFY(store.same(raw, rle8));
        QVERIFY(store.same(lz5, rle8));
        QVERIFY(!store.same(rle8, other));
        // Hashes, once made, stay with the entries.
        QCOMPARE(rle8->hash(), QStreamCache::hash(imagePixels(image)));
        QVERIFY(other->hash() != 0);
        // Known hashes and equal stored bytes need no decoding.
        QStreamCacheEntry *copy = store.add(store.raw(rle8), QStreamCacheFilter::RLE8, info, rle8->hash());
        QVERIFY(store.same(copy, rle8));
        // The first entry of equal pixels other than the one left out.
        const QByteArray pixels = imagePixels(image);
        QCOMPARE(store.findEqual(pixels, nullptr), raw);
        QCOMPARE(store.findEqual(pixels, raw), rle8);
        QVERIFY(!store.findEqual(imagePixels(SpriteSets::lowIndexes(30, 9, 7)), nullptr));
        QVERIFY(!store.findEqual(QByteArray(), nullptr));

        // The same pixels at another size are another image.
        QImageInfo wider = info;
        wider.width = 60;
        wider.height = 4;
        QStreamCacheEntry *reshaped = store.add(encodeRle8(image), QStreamCacheFilter::RLE8, wider);
        QVERIFY(!store.same(reshaped, rle8));
        QVERIFY(!store.findEqual(pixels, nullptr, wider));
        // Two images that don't decode are not equal.
        QStreamCacheEntry *broken = store.add(QByteArray("junk"), QStreamCacheFilter::PNG, info);
        QStreamCacheEntry *broken2 = store.add(QByteArray("junk"), QStreamCacheFilter::PNG, info);
        QVERIFY(!store.same(broken, broken2));
        QVERIFY(!store.same(broken, nullptr));
    }
};

QTEST_GUILESS_MAIN(tst_QStreamCache)
#include "tst_qstreamcache.moc"
