// The vocabulary file lies beside the program, where a user may edit it:
// whatever it holds, a load ends with a description every processor can use.

#include "core/text/qmugensyntaxproperties.h"

#include "fuzzinput.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    QTemporaryFile file;
    if (!writeFuzzInput(file, data, size))
        return 0;

    QMugenSyntaxProperties properties;
    properties.load(file.fileName());
    // A second read over the first must not leak or leave stale controllers.
    properties.load(file.fileName());
    for (const QList<QSyntaxController *> *list :
         {&properties.stateControllers(), &properties.bgControllers(), &properties.bgControls(),
          &properties.fontDefs()}) {
        for (const QSyntaxController *controller : *list) {
            if (!controller)
                __builtin_trap();
            for (const QSyntaxParam &param : controller->params) {
                if (param.type < 0 || param.type > QSyntaxParam::Unknown)
                    __builtin_trap();
            }
        }
    }
    (void)properties.completionNames();
    return 0;
}
