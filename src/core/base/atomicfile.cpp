#include "atomicfile.h"

#include <QDomDocument>
#include <QFile>
#include <QSaveFile>
#include <QXmlStreamWriter>

#include <algorithm>

bool writeFileAtomically(const QString &fileName, const QByteArray &bytes, QString *error)
{
    QSaveFile file(fileName);
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size() || !file.commit()) {
        if (error)
            *error = file.errorString();
        file.cancelWriting();
        return false;
    }
    return true;
}

namespace {

void writeNode(QXmlStreamWriter &writer, const QDomNode &node)
{
    if (node.isElement()) {
        const QDomElement element = node.toElement();
        const QDomNamedNodeMap map = element.attributes();
        QList<QDomAttr> attributes;
        for (int i = 0; i < map.count(); ++i)
            attributes.append(map.item(i).toAttr());
        std::sort(attributes.begin(), attributes.end(),
                  [](const QDomAttr &a, const QDomAttr &b) { return a.name() < b.name(); });
        if (element.hasChildNodes())
            writer.writeStartElement(element.tagName());
        else
            writer.writeEmptyElement(element.tagName());
        for (const QDomAttr &attribute : std::as_const(attributes))
            writer.writeAttribute(attribute.name(), attribute.value());
        for (QDomNode child = element.firstChild(); !child.isNull(); child = child.nextSibling())
            writeNode(writer, child);
        if (element.hasChildNodes())
            writer.writeEndElement();
    } else if (node.isCDATASection()) {
        writer.writeCDATA(node.toCDATASection().data());
    } else if (node.isText()) {
        writer.writeCharacters(node.toText().data());
    } else if (node.isComment()) {
        writer.writeComment(node.toComment().data());
    }
}

} // namespace

QByteArray serializeXml(const QDomDocument &document, int indent)
{
    QByteArray bytes;
    QXmlStreamWriter writer(&bytes);
    writer.setAutoFormatting(true);
    writer.setAutoFormattingIndent(indent);
    if (!document.doctype().name().isEmpty())
        writer.writeDTD(QStringLiteral("<!DOCTYPE %1>").arg(document.doctype().name()));
    for (QDomNode child = document.firstChild(); !child.isNull(); child = child.nextSibling())
        writeNode(writer, child);
    writer.writeEndDocument();
    // The writer puts a line break before the doctype; the file starts with it.
    if (bytes.startsWith('\n'))
        bytes.remove(0, 1);
    return bytes;
}

bool writeXmlAtomically(const QString &fileName, const QDomDocument &document, QString *error)
{
    return writeFileAtomically(fileName, serializeXml(document), error);
}

QDomElement readXmlRoot(QDomDocument &document, const QString &fileName, const QString &rootTag)
{
    QFile file(fileName);
    if (!file.open(QIODevice::ReadOnly) || !document.setContent(&file))
        return QDomElement();
    const QDomElement root = document.documentElement();
    return root.tagName() == rootTag ? root : QDomElement();
}
