#include "qpresetmanager.h"

#include "qiconsetmanager.h"
#include "qinterface.h"
#include "qinterfacecontrol.h"
#include "qstylesheetmanager.h"
#include "screenscale.h"

#include "core/base/atomicfile.h"
#include "core/base/qcolorsetmanager.h"
#include "core/base/qsyntaxformats.h"

#include <QDomDocument>
#include <QFrame>
#include <QLabel>
#include <QRegularExpression>
#include <QScrollBar>
#include <QToolButton>

QPresetManager *presets = nullptr;

namespace {

/** "x,y" of at most three digits each, or nothing. */
bool readPair(const QString &text, int &first, int &second)
{
    static const QRegularExpression pair(QStringLiteral("^([0-9]{1,3}),([0-9]{1,3})$"));
    const QRegularExpressionMatch match = pair.match(text);
    if (!match.hasMatch())
        return false;
    first = match.captured(1).toInt();
    second = match.captured(2).toInt();
    return true;
}

Qt::Alignment alignment(const QString &text)
{
    static const QRegularExpression words(QStringLiteral("^([a-z]{1,7}),([a-z]{1,7})$"));
    const QRegularExpressionMatch match = words.match(text);
    if (!match.hasMatch())
        return Qt::AlignLeft | Qt::AlignTop;
    Qt::Alignment result;
    const QString horizontal = match.captured(1);
    if (horizontal == QLatin1String("left"))
        result |= Qt::AlignLeft;
    else if (horizontal == QLatin1String("right"))
        result |= Qt::AlignRight;
    else if (horizontal == QLatin1String("center"))
        result |= Qt::AlignHCenter;
    else if (horizontal == QLatin1String("justify"))
        result |= Qt::AlignJustify;
    const QString vertical = match.captured(2);
    if (vertical == QLatin1String("top"))
        result |= Qt::AlignTop;
    else if (vertical == QLatin1String("bottom"))
        result |= Qt::AlignBottom;
    else if (vertical == QLatin1String("center"))
        result |= Qt::AlignVCenter;
    return result;
}

/** What a "control" element says beyond where it stands, by the kind of the control. */
void applyKindAttributes(QWidget *widget, int kind, const QDomElement &element, const QPresetManager &preset)
{
    if (auto *button = qobject_cast<QToolButton *>(widget)) {
        button->setAutoRaise(element.attribute(QStringLiteral("flat")) == QLatin1String("true"));
        if (element.hasAttribute(QStringLiteral("icon"))) {
            const int size = preset.scale(element.attribute(QStringLiteral("icon")).toInt());
            button->setIconSize(QSize(size, size));
        }
    } else if (auto *label = qobject_cast<QLabel *>(widget)) {
        label->setAlignment(alignment(element.attribute(QStringLiteral("align"), QStringLiteral("left,top"))));
    } else if (kind == QInterfaceControl::ScrollBar || kind == QInterfaceControl::Line) {
        const bool horizontal = element.attribute(QStringLiteral("orientation"), QStringLiteral("horizontal"))
            == QLatin1String("horizontal");
        if (auto *bar = qobject_cast<QScrollBar *>(widget))
            bar->setOrientation(horizontal ? Qt::Horizontal : Qt::Vertical);
        else if (auto *line = qobject_cast<QFrame *>(widget))
            line->setFrameShape(horizontal ? QFrame::HLine : QFrame::VLine);
    }
}

/** "width,top,height" of a panel, each of at most three digits. */
void applyMetric(QPanelWidget *panel, const QString &text, const QPresetManager &preset)
{
    static const QRegularExpression metric(QStringLiteral("^([0-9]{1,3}),([0-9]{1,3}),([0-9]{1,3})$"));
    const QRegularExpressionMatch match = metric.match(text);
    if (!match.hasMatch())
        return;
    panel->setMinimumWidth(preset.scale(match.captured(1).toInt()));
    panel->setTitleArea(preset.scale(match.captured(2).toInt()), preset.scale(match.captured(3).toInt()));
}

/** The name of a look that a preset's root names, "Classic" when it names none. */
QString lookOf(const QDomElement &root, const char *attribute)
{
    return root.attribute(QLatin1String(attribute), QStringLiteral("Classic"));
}

} // namespace

QPresetManager::QPresetManager(const QDataFolder &folder)
    : m_folder(folder)
    , m_names(folder.fileNames(QStringLiteral(".xml")))
{
}

int QPresetManager::scale(int value) const
{
    return value * m_dpi / 96;
}

bool QPresetManager::looks(const QString &preset, QString &stylesheet, QString &iconset, QString &colorset) const
{
    QDomDocument document;
    const QDomElement root = readXmlRoot(document, m_folder.find(preset + QLatin1String(".xml")),
                                         QStringLiteral("preset"));
    if (root.isNull())
        return false;
    stylesheet = lookOf(root, "stylesheet");
    iconset = lookOf(root, "iconset");
    colorset = lookOf(root, "colorset");
    return true;
}

void QPresetManager::load(const QString &preset, const QString &iconset, const QString &stylesheet,
                          const QString &colorset)
{
    QInterface *ui = mainInterface;
    if (ui)
        ui->clearLayouts();
    QDomDocument document;
    const QDomElement root = readXmlRoot(document, m_folder.find(preset + QLatin1String(".xml")),
                                         QStringLiteral("preset"));
    if (root.isNull())
        return;
    auto chosen = [&root](const QString &given, const char *attribute) {
        return given.isEmpty() ? lookOf(root, attribute) : given;
    };
    if (stylesheets)
        stylesheets->load(chosen(stylesheet, "stylesheet"));
    if (iconsets)
        iconsets->load(chosen(iconset, "iconset"), ui ? &ui->actions() : nullptr, true);
    if (colorsets && colorsets->load(chosen(colorset, "colorset"), false) && syntaxFormats)
        colorsets->applyTo(*syntaxFormats);
    m_dpi = screenDpi();
    if (!ui)
        return;

    applyMetric(ui->leftPanel(), root.attribute(QStringLiteral("panel-metric"), QStringLiteral("220,0,30")), *this);
    applyMetric(ui->rightPanel(), root.attribute(QStringLiteral("extra-metric"), QStringLiteral("220,0,30")), *this);
    for (QDomElement e = root.firstChildElement(); !e.isNull(); e = e.nextSiblingElement()) {
        if (e.tagName() == QLatin1String("toolbar"))
            loadToolbar(ui, e);
        else if (e.tagName() == QLatin1String("panel"))
            loadPanel(ui, e);
    }
}

void QPresetManager::loadToolbar(QInterface *ui, const QDomElement &element) const
{
    QToolbarLayout *layout = ui->layout(element.attribute(QStringLiteral("name")));
    if (!layout)
        return;
    layout->iconSize = scale(element.attribute(QStringLiteral("iconsize"), QStringLiteral("24")).toInt());
    for (QDomElement e = element.firstChildElement(); !e.isNull(); e = e.nextSiblingElement()) {
        if (e.tagName() == QLatin1String("separator")) {
            layout->actions.append(nullptr);
        } else if (e.tagName() == QLatin1String("button")) {
            if (QAction *action = ui->actions().action(e.attribute(QStringLiteral("name")))) {
                action->setVisible(true);
                layout->actions.append(action);
            }
        }
    }
}

void QPresetManager::loadPanel(QInterface *ui, const QDomElement &element) const
{
    const bool editorPanel = element.attribute(QStringLiteral("parent"), QStringLiteral("editor"))
        == QLatin1String("editor");
    QWidget *page = ui->panelPage(editorPanel, element.attribute(QStringLiteral("name")));
    if (!page)
        return;
    for (QDomElement e = element.firstChildElement(QStringLiteral("control")); !e.isNull();
         e = e.nextSiblingElement(QStringLiteral("control"))) {
        const QString name = e.attribute(QStringLiteral("name"));
        QInterfaceControl *control = ui->controlNamed(name);
        if (!control)
            continue;
        int x = 0;
        int y = 0;
        readPair(e.attribute(QStringLiteral("position"), QStringLiteral("0,0")), x, y);
        int width = -1;
        int height = -1;
        if (readPair(e.attribute(QStringLiteral("size")), width, height)) {
            width = scale(width);
            height = scale(height);
        }
        QWidget *widget = control->create(page, name, QPoint(scale(x), scale(y)), QSize(width, height),
                                          ui->translation());
        if (!widget)
            continue;
        applyKindAttributes(widget, control->kind(), e, *this);
        // A button shows as long as its action does (the organizer hides
        // its palette switch outside the sprites editor).
        const auto *action = dynamic_cast<QInterfaceControlAction *>(control);
        widget->setVisible(!action || action->action()->isVisible());
    }
}
