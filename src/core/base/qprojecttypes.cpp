#include "qprojecttypes.h"

#include <QCoreApplication>

QString projectTypeText(int type)
{
    switch (type) {
    case Character: return QCoreApplication::translate("QProject", "Character");
    case Storyboard: return QCoreApplication::translate("QProject", "Storyboard");
    case Stage: return QCoreApplication::translate("QProject", "Stage");
    case Font: return QCoreApplication::translate("QProject", "Font");
    }
    return QString();
}

QString projectFileFilter(QProjectFileType file)
{
    switch (file) {
    case FileDefinitions: return QCoreApplication::translate("QProject", "Definitions (*.def)");
    case FileSprites: return QCoreApplication::translate("QProject", "Sprites (*.sff)");
    case FileAnimations: return QCoreApplication::translate("QProject", "Animations (*.air)");
    case FileCommands: return QCoreApplication::translate("QProject", "Commands (*.cmd)");
    case FileStates:
        return QCoreApplication::translate(
            "QProject", "Constants (*.cns);;States (*.st);;Text (*.txt);;Lua script (*.lua)");
    case FileSounds: return QCoreApplication::translate("QProject", "Sounds (*.snd)");
    }
    return QString();
}

QString engineTargetText(int target)
{
    // The engines' own names, not translated.
    return target == TargetIkemen ? QStringLiteral("Ikemen GO") : QStringLiteral("M.U.G.E.N.");
}
