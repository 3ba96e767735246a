#pragma once

#include <QByteArray>
#include <QString>

class QDomDocument;
class QDomElement;

/**
 * Writes `bytes` to `fileName` through QSaveFile: the data goes to a file
 * aside and is renamed over the target only when all of it was written, so
 * a failed save leaves the earlier file untouched and no partial file.
 * Returns false on failure, with the reason in `error` if given.
 */
bool writeFileAtomically(const QString &fileName, const QByteArray &bytes, QString *error = nullptr);

/**
 * The text of an XML document as the program writes its settings: the
 * doctype line, then the elements at an indent of `indent`, attributes in
 * the order of their names. QDomDocument's own writer puts attributes in
 * an order that changes from run to run, which would make every save of an
 * unchanged file differ from the last.
 */
QByteArray serializeXml(const QDomDocument &document, int indent = 4);

/** Writes serializeXml(document) atomically. */
bool writeXmlAtomically(const QString &fileName, const QDomDocument &document,
                        QString *error = nullptr);

/**
 * Reads the XML settings file `fileName` into `document` and returns its
 * root element, or a null element when the file can't be read, isn't XML,
 * or its root isn't `rootTag`. Every settings file of the program is read
 * through here: failures are silent and whoever asked keeps what it had.
 */
QDomElement readXmlRoot(QDomDocument &document, const QString &fileName, const QString &rootTag);
