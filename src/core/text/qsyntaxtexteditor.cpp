#include "qsyntaxtexteditor.h"

#include "../base/atomicfile.h"
#include "../base/qcodepages.h"
#include "../base/quserprompt.h"
#include "qmugensyntaxprocessor.h"
#include "qsyntaxhierarchy.h"
#include "qsyntaxprocessor.h"
#include "qtextelements.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>
#include <QSignalBlocker>
#include <QTextCodec>
#include <QTextDocument>

#include <memory>

#include <uchardet.h>

namespace {

int utf8Codepage()
{
    return codepageOfCodec(QTextCodec::codecForName("UTF-8"));
}

/**
 * The text as the file holds it. toPlainText() would turn non-breaking
 * spaces into plain ones, and a file opened and saved must not change.
 */
QString rawText(const QTextDocument *document)
{
    QString text = document->toRawText();
    text.replace(QChar::ParagraphSeparator, QLatin1Char('\n'));
    return text;
}

/** The charset that detection names for `bytes`, upper case, or empty. */
QByteArray detectCharset(const QByteArray &bytes)
{
    uchardet_t detector = uchardet_new();
    uchardet_handle_data(detector, bytes.constData(), size_t(bytes.size()));
    uchardet_data_end(detector);
    const QByteArray charset = uchardet_get_charset(detector);
    uchardet_delete(detector);
    return charset;
}

/** Whether `codec` reads `bytes` into text that it writes back to the same bytes. */
bool readsLosslessly(QTextCodec *codec, const QByteArray &bytes, QString &text)
{
    QTextCodec::ConverterState state;
    text = codec->toUnicode(bytes.constData(), int(bytes.size()), &state);
    if (state.invalidChars > 0)
        return false;
    const std::unique_ptr<QTextEncoder> encoder(codec->makeEncoder(QTextCodec::IgnoreHeader));
    QByteArray back = encoder->fromUnicode(text);
    // A mark at the start is read and not written: compare without it.
    QByteArray original = bytes;
    if (codec->mibEnum() == 106 && original.startsWith("\xef\xbb\xbf"))
        original.remove(0, 3);
    return back == original;
}

} // namespace

QString QSyntaxTextEditor::decode(const QByteArray &bytes, int codepage, int *actual)
{
    QList<QTextCodec *> candidates;
    if (QTextCodec *marked = QTextCodec::codecForUtfText(bytes, nullptr))
        candidates.append(marked);
    const QByteArray charset = detectCharset(bytes);
    // Plain ASCII says nothing of the characters a user may add later.
    if (!charset.isEmpty() && charset != "ASCII") {
        if (QTextCodec *detected = QTextCodec::codecForName(charset))
            candidates.append(detected);
    }
    candidates.append(codecForCodepage(codepage));
    candidates.append(QTextCodec::codecForName("windows-1252"));
    candidates.append(QTextCodec::codecForName("ISO-8859-1"));

    QString text;
    for (QTextCodec *codec : std::as_const(candidates)) {
        if (codec && readsLosslessly(codec, bytes, text)) {
            if (actual)
                *actual = codepageOfCodec(codec);
            return text;
        }
    }
    // Latin-1 reads every byte: this isn't reached.
    if (actual)
        *actual = 0;
    return QString::fromLatin1(bytes);
}

QSyntaxTextEditor::QSyntaxTextEditor(QProjectOwner *project, QProjectFileType fileType,
                                     bool parseElements, quint32 version, bool checking)
    : QElementTextEditor(parseElements)
    , QProjectFile(project, fileType)
    , m_parseElements(parseElements)
    , m_checking(checking)
    , m_version(version)
    , m_codepage(utf8Codepage())
{
    auto tell = [this] {
        Q_EMIT changed();
        notifyOwner();
    };
    connect(document(), &QTextDocument::modificationChanged, this, tell);
    connect(document(), &QTextDocument::contentsChanged, this, tell);
    connect(document(), &QTextDocument::contentsChanged, this, &QSyntaxTextEditor::docChanged);
    // Rebuilding the hierarchy reads the whole text: not at every key.
    m_hierarchyTimer.setSingleShot(true);
    m_hierarchyTimer.setInterval(1000);
    connect(&m_hierarchyTimer, &QTimer::timeout, this, &QSyntaxTextEditor::updateHierarchy);
    setLanguage(1);
}

QSyntaxTextEditor::~QSyntaxTextEditor()
{
    dropProcessor();
}

void QSyntaxTextEditor::detachProcessor()
{
    // A processor that lets its document go clears the colours it gave, and
    // the document reports that as a change of all its text: nobody needs
    // to read the text again for that.
    const QSignalBlocker blocker(document());
    if (m_processor)
        m_processor->setDocument(nullptr);
}

void QSyntaxTextEditor::dropProcessor()
{
    detachProcessor();
    delete m_processor;
    m_processor = nullptr;
}

void QSyntaxTextEditor::setLanguage(int language)
{
    if (m_processor && language == m_language)
        return;
    m_language = language;
    dropProcessor();
    // TODO: Lua text gets its own processor, with the Lua syntax.
    if (language == QSyntaxProcessor::MugenKind)
        m_processor = new QMugenSyntaxProcessor(document(), m_version, m_checking, mugenSyntax, m_target);
    else
        m_processor = new QNullSyntaxProcessor(document(), m_version);
}

QSyntaxHierarchy *QSyntaxTextEditor::hierarchy() const
{
    return m_processor->hierarchy();
}

void QSyntaxTextEditor::docChanged()
{
    m_hierarchyTimer.start();
}

void QSyntaxTextEditor::updateHierarchy()
{
    m_hierarchyTimer.stop();
    if (m_checking)
        hierarchy()->rebuild(text());
    hierarchyChanged();
    Q_EMIT hierarchyUpdated();
    notifyOwner();
    // The diagnostics of the lines are settled by now.
    check();
}

void QSyntaxTextEditor::hierarchyChanged()
{
}

bool QSyntaxTextEditor::load(const QString &fileName, int codepage, bool keepName)
{
    QFile file(fileName);
    if (!file.open(QIODevice::ReadOnly))
        return false;
    const QByteArray bytes = file.readAll();
    file.close();

    int actual = 0;
    const QString text = decode(bytes, codepage, &actual);

    // The language comes from the text, not from the file's name.
    static const QRegularExpression engineText(QStringLiteral("^\\s*[;\\[]"));
    static const QRegularExpression lua(QStringLiteral("\\bfunction\\b"));
    int language = 0;
    if (engineText.match(text).hasMatch())
        language = 1;
    else if (text.indexOf(lua) > 0)
        language = 2;
    // A processor of another language would colour the new text once for
    // nothing: the old one lets the document go before the text comes, and
    // the new one reads the text once it stands. The old one stays until
    // then, with its hierarchy, for whoever hears of the new text.
    if (language != m_language)
        detachProcessor();

    const QString title = document()->metaInformation(QTextDocument::DocumentTitle);
    const QString url = document()->metaInformation(QTextDocument::DocumentUrl);
    document()->setPlainText(text);
    setLanguage(language);
    // A screenpack's files are known by their sections, and read for their form.
    if (auto *mugen = qobject_cast<QMugenSyntaxProcessor *>(m_processor))
        mugen->setScreenpack(QMugenSyntaxProcessor::readsAsScreenpack(text));
    if (keepName) {
        document()->setMetaInformation(QTextDocument::DocumentTitle, title);
        document()->setMetaInformation(QTextDocument::DocumentUrl, url);
    } else {
        setFileName(fileName);
    }
    m_codepage = actual;
    document()->setModified(false);
    updateHierarchy();
    return true;
}

QByteArray QSyntaxTextEditor::encode(const QString &text, bool asUtf8) const
{
    QTextCodec *codec = asUtf8 ? QTextCodec::codecForName("UTF-8") : codecForCodepage(m_codepage);
    // IgnoreHeader: the engine reads no byte order mark, so none is written.
    const std::unique_ptr<QTextEncoder> encoder(codec->makeEncoder(QTextCodec::IgnoreHeader));
    return encoder->fromUnicode(text);
}

bool QSyntaxTextEditor::save(const QString &fileName, bool asUtf8, bool asCopy)
{
    QString text = rawText(document());
    text.replace(QLatin1Char('\n'), QLatin1String("\r\n"));
    QString reason;
    if (!writeFileAtomically(fileName, encode(text, asUtf8), &reason)) {
        // Whoever asked for the save, the user must learn that the changes
        // are still only in memory.
        userPrompt->critical(tr("Text saving error"), tr("An error occurred when saving the file '%1'.\n%2")
                                                          .arg(QDir::toNativeSeparators(fileName), reason));
        return false;
    }
    if (!asCopy) {
        setFileName(fileName);
        document()->setModified(false);
    } else if (QFileInfo(fileName).absoluteFilePath() == this->fileName()) {
        // A copy over our own file is still our own write.
        watchFile();
    }
    return true;
}

void QSyntaxTextEditor::clear()
{
    document()->clear();
    setFileName(QString());
    document()->setModified(false);
    m_codepage = utf8Codepage();
    updateHierarchy();
}

QString QSyntaxTextEditor::text() const
{
    return rawText(document());
}

QString QSyntaxTextEditor::fileName() const
{
    return document()->metaInformation(QTextDocument::DocumentUrl);
}

void QSyntaxTextEditor::setFileName(const QString &path)
{
    unwatchFile();
    const QFileInfo info(path);
    document()->setMetaInformation(QTextDocument::DocumentTitle, path.isEmpty() ? QString() : info.fileName());
    document()->setMetaInformation(QTextDocument::DocumentUrl, path.isEmpty() ? QString() : info.absoluteFilePath());
    // Also after a save to the same name: the save put a new file there,
    // which must be watched afresh and is our own.
    watchFile();
}

void QSyntaxTextEditor::reload(const QString &path)
{
    if (load(path, m_codepage, true))
        setOwnWrite();
}

QString QSyntaxTextEditor::title() const
{
    return document()->metaInformation(QTextDocument::DocumentTitle);
}

quint32 QSyntaxTextEditor::version() const
{
    return m_version;
}

void QSyntaxTextEditor::setVersion(quint32 version)
{
    m_version = version;
    m_processor->setVersion(version);
}

void QSyntaxTextEditor::setTarget(int target)
{
    m_target = target;
    m_processor->setTarget(target);
}

void QSyntaxTextEditor::setChecking(bool checking)
{
    m_checking = checking;
    m_processor->setChecking(checking);
}

bool QSyntaxTextEditor::checkSave(quint32)
{
    return true;
}

bool QSyntaxTextEditor::checkDiscard()
{
    return askDiscard(discardQuestion());
}

bool QSyntaxTextEditor::isModified() const
{
    return document()->isModified();
}

bool QSyntaxTextEditor::isEmpty() const
{
    return document()->isEmpty();
}

void QSyntaxTextEditor::check()
{
    // The processor leaves its diagnostics on the lines; notices count as
    // warnings here, only syntax errors as errors.
    messages().begin();
    for (QTextBlock block = document()->begin(); block.isValid(); block = block.next()) {
        const QTextEditorBlockData *data = QTextEditorBlockData::of(block, false);
        if (!data)
            continue;
        for (const QSyntaxIssue &issue : data->issues)
            messages().add(issue.severity != 0 ? 1 : 0, issue.text, issue.start, block.blockNumber());
    }
    messages().end();
}

void QSyntaxTextEditor::processChanges(QList<QTextElementChange> &changes)
{
    linkGroups(changes);
    QElementTextEditor::processChanges(changes);
}

QString QSyntaxTextEditor::discardQuestion() const
{
    // State files are plain documents of this class; every other kind of
    // text names its own question.
    if (fileType() != FileStates)
        return QString();
    const QString name = title().isEmpty() ? QCoreApplication::translate("QSyntaxTextEditor", "the states")
                                           : title();
    return QCoreApplication::translate("QSyntaxTextEditor",
                                       "Do you really want to discard the changes made in %1?")
        .arg(name);
}
