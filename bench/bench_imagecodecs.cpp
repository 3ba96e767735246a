// Decoding runs every time a sprite is drawn, so it has to keep up with
// playing animations of big sprites; encoding runs on save. Throughput is
// counted in bytes of pixels, beside memcpy of the same bytes as the limit.
//
//   build/bench/bench_imagecodecs --benchmark_filter=Decode

#include "core/sprites/imagecodecs.h"

#include "../tests/support/corpussprites.h"
#include "../tests/support/rle5encoder.h"

#include <QDir>
#include <QCoreApplication>

#include "benchsupport.h"

#include <cstring>

namespace {

struct Sample
{
    QImageInfo info;
    QByteArray data;
    QImage image;
};

/** The sprites of one encoding, taken from the biggest corpus files that hold it. */
struct Samples
{
    QList<Sample> items;
    qint64 pixelBytes = 0;
};

QString corpusDir()
{
    const QString dir = QStringLiteral(KESTRADA_CORPUS_DIR);
    return QDir(dir).exists() ? dir : QString();
}

QImage decodeSample(int filter, const QByteArray &data, const QImageInfo &info)
{
    switch (filter) {
    case QStreamCacheFilter::PCX:
        return decodePcx(data);
    case QStreamCacheFilter::PNG:
        return decodePng(data);
    case QStreamCacheFilter::RLE8:
        return imageFromPixels(decodeRle8(data, info), info);
    case QStreamCacheFilter::RLE5:
        return imageFromPixels(decodeRle5(data, info), info);
    default:
        return imageFromPixels(decodeLz5(data, info), info);
    }
}

const Samples &samples(int filter, const QString &fileSuffix)
{
    static QMap<QString, Samples> cache;
    const QString key = QString::number(filter) + fileSuffix;
    if (cache.contains(key))
        return cache[key];
    Samples &result = cache[key];
    // RLE5 has no sprite in the corpus: the LZ5 sprites are written as RLE5.
    const int source = filter == QStreamCacheFilter::RLE5 ? int(QStreamCacheFilter::LZ5) : filter;
    for (const CorpusSprites::Sprite &sprite : CorpusSprites::withFilter(corpusDir(), source)) {
        if (!sprite.file.endsWith(fileSuffix))
            continue;
        Sample sample{sprite.info, sprite.data, decodeSample(source, sprite.data, sprite.info)};
        if (sample.image.isNull())
            continue;
        if (sample.info.format == QImageInfo::Auto)
            sample.info = QImageInfo{quint16(sample.image.width()), quint16(sample.image.height()),
                                     sample.image.format()};
        if (filter == QStreamCacheFilter::RLE5) {
            QByteArray linear;
            for (int y = 0; y < sample.image.height(); ++y)
                linear.append(reinterpret_cast<const char *>(sample.image.constScanLine(y)), sample.image.width());
            sample.data = Rle5Encoder::encode(linear);
        }
        result.pixelBytes += sample.image.sizeInBytes();
        result.items.append(sample);
    }
    return result;
}

bool ready(benchmark::State &state, const Samples &set)
{
    if (set.items.isEmpty()) {
        state.SkipWithError("No sprites: the corpus isn't there");
        return false;
    }
    return true;
}

template <typename Decode>
void decodeAll(benchmark::State &state, const Samples &set, Decode decode)
{
    if (!ready(state, set))
        return;
    for (auto _ : state) {
        for (const Sample &sample : set.items)
            benchmark::DoNotOptimize(decode(sample));
    }
    state.SetBytesProcessed(state.iterations() * set.pixelBytes);
}

template <typename Encode>
void encodeAll(benchmark::State &state, const Samples &set, Encode encode)
{
    if (!ready(state, set))
        return;
    for (auto _ : state) {
        for (const Sample &sample : set.items)
            benchmark::DoNotOptimize(encode(sample.image));
    }
    state.SetBytesProcessed(state.iterations() * set.pixelBytes);
}

// The files with the most data of each encoding.
const Samples &rle8() { return samples(QStreamCacheFilter::RLE8, QStringLiteral("elecbyte-mugen10/data/mugen1/system.sff")); }
// A stage background: big sprites with longer runs than the screens' text.
const Samples &rle8Stage() { return samples(QStreamCacheFilter::RLE8, QStringLiteral("elecbyte-mugen10/stages/stage0-720.sff")); }
const Samples &lz5() { return samples(QStreamCacheFilter::LZ5, QStringLiteral("elecbyte-mugen10/chars/kfm720/kfm720.sff")); }
const Samples &rle5() { return samples(QStreamCacheFilter::RLE5, QStringLiteral("elecbyte-mugen10/chars/kfm720/kfm720.sff")); }
const Samples &png() { return samples(QStreamCacheFilter::PNG, QStringLiteral("ikemen-screenpack/chars/kfm720/kfm720.sff")); }
const Samples &pcx() { return samples(QStreamCacheFilter::PCX, QStringLiteral("goro.sff")); }

void BM_DecodeRle8(benchmark::State &state)
{
    decodeAll(state, rle8(), [](const Sample &s) { return decodeRle8(s.data, s.info); });
}
BENCHMARK(BM_DecodeRle8);

void BM_DecodeRle8Stage(benchmark::State &state)
{
    decodeAll(state, rle8Stage(), [](const Sample &s) { return decodeRle8(s.data, s.info); });
}
BENCHMARK(BM_DecodeRle8Stage);

void BM_DecodeRle5(benchmark::State &state)
{
    decodeAll(state, rle5(), [](const Sample &s) { return decodeRle5(s.data, s.info); });
}
BENCHMARK(BM_DecodeRle5);

void BM_DecodeLz5(benchmark::State &state)
{
    decodeAll(state, lz5(), [](const Sample &s) { return decodeLz5(s.data, s.info); });
}
BENCHMARK(BM_DecodeLz5);

void BM_DecodePcx(benchmark::State &state)
{
    decodeAll(state, pcx(), [](const Sample &s) { return decodePcx(s.data); });
}
BENCHMARK(BM_DecodePcx);

void BM_DecodePng(benchmark::State &state)
{
    decodeAll(state, png(), [](const Sample &s) { return decodePng(s.data); });
}
BENCHMARK(BM_DecodePng);

void BM_EncodeRle8(benchmark::State &state)
{
    encodeAll(state, rle8(), [](const QImage &image) { return encodeRle8(image); });
}
BENCHMARK(BM_EncodeRle8);

void BM_EncodeLz5(benchmark::State &state)
{
    encodeAll(state, lz5(), [](const QImage &image) { return encodeLz5(image, true); });
}
BENCHMARK(BM_EncodeLz5)->Unit(benchmark::kMillisecond);

void BM_EncodePcx(benchmark::State &state)
{
    encodeAll(state, pcx(), [](const QImage &image) { return encodePcx(image); });
}
BENCHMARK(BM_EncodePcx);

void BM_EncodePng(benchmark::State &state)
{
    encodeAll(state, png(), [](const QImage &image) { return encodePng(image); });
}
BENCHMARK(BM_EncodePng)->Unit(benchmark::kMillisecond);

/** The physical limit: copying the decoded bytes of the same sprites. */
void memcpyAll(benchmark::State &state, const Samples &set)
{
    if (!ready(state, set))
        return;
    QByteArray target(set.pixelBytes, Qt::Uninitialized);
    for (auto _ : state) {
        char *out = target.data();
        for (const Sample &sample : set.items) {
            std::memcpy(out, sample.image.constBits(), size_t(sample.image.sizeInBytes()));
            out += sample.image.sizeInBytes();
        }
        benchmark::ClobberMemory();
    }
    state.SetBytesProcessed(state.iterations() * set.pixelBytes);
}

void BM_MemcpyRle8(benchmark::State &state) { memcpyAll(state, rle8()); }
BENCHMARK(BM_MemcpyRle8);
void BM_MemcpyRle8Stage(benchmark::State &state) { memcpyAll(state, rle8Stage()); }
BENCHMARK(BM_MemcpyRle8Stage);
void BM_MemcpyLz5(benchmark::State &state) { memcpyAll(state, lz5()); }
BENCHMARK(BM_MemcpyLz5);
void BM_MemcpyPng(benchmark::State &state) { memcpyAll(state, png()); }
BENCHMARK(BM_MemcpyPng);
void BM_MemcpyPcx(benchmark::State &state) { memcpyAll(state, pcx()); }
BENCHMARK(BM_MemcpyPcx);

} // namespace

int main(int argc, char **argv)
{
    QCoreApplication application(argc, argv);
    return BenchSupport::runBenchmarks(argc, argv);
}
