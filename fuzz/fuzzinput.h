// What every fuzz target of a file reader needs: Qt's application object, made
// once for the process, and the input written to a file the reader can open.
#pragma once

#include <QCoreApplication>
#include <QTemporaryFile>

#include <cstddef>
#include <cstdint>

/** Makes Qt's application object on the first call. */
inline void makeFuzzApplication()
{
    static int argc = 1;
    static char name[] = "fuzz";
    static char *argv[] = {name, nullptr};
    static QCoreApplication application(argc, argv);
}

/** Writes the fuzzer's input into `file` and closes it; false when no file could be made. */
inline bool writeFuzzInput(QTemporaryFile &file, const uint8_t *data, size_t size)
{
    makeFuzzApplication();
    if (!file.open())
        return false;
    file.write(reinterpret_cast<const char *>(data), qint64(size));
    file.close();
    return true;
}
