// Precompiled header of the core: the Qt headers nearly every file reads.
// Only speeds the build; every file still includes what it uses.
#pragma once

#include <QByteArray>
#include <QCoreApplication>
#include <QFile>
#include <QFileInfo>
#include <QHash>
#include <QImage>
#include <QList>
#include <QMap>
#include <QObject>
#include <QString>
#include <QStringList>
#include <QTextDocument>
#include <QVariant>
#include <QAbstractListModel>
