// The configuration loader reads a file that a user may have edited by hand
// or imported from anywhere (.ksc3): whatever it holds, a load ends with a
// usable store.

#include "core/base/qmugenmodel.h"

#include <QCoreApplication>
#include <QFile>
#include <QTemporaryFile>

#include <cstddef>
#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    static int argc = 1;
    static char name[] = "fuzz_configuration";
    static char *argv[] = {name, nullptr};
    static QCoreApplication application(argc, argv);

    QTemporaryFile file;
    if (!file.open())
        return 0;
    file.write(reinterpret_cast<const char *>(data), qint64(size));
    file.close();

    QMugenModel model;
    model.load(file.fileName());
    // Whatever was read, the store answers and saves.
    if (model.count() > QMugenModel::MaxInstallations)
        __builtin_trap();
    (void)model.config.value(QStringLiteral("undo_limit")).toInt();
    return 0;
}
