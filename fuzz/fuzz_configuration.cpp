// The configuration loader reads a file that a user may have edited by hand
// or imported from anywhere (.ksc3): whatever it holds, a load ends with a
// usable store.

#include "core/base/qmugenmodel.h"

#include "fuzzinput.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    QTemporaryFile file;
    if (!writeFuzzInput(file, data, size))
        return 0;

    QMugenModel model;
    model.load(file.fileName());
    // Whatever was read, the store answers and saves.
    if (model.count() > QMugenModel::MaxInstallations)
        __builtin_trap();
    (void)model.config.value(QStringLiteral("undo_limit")).toInt();
    return 0;
}
