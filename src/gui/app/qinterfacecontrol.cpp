#include "qinterfacecontrol.h"

#include "qtranslationunit.h"

#include <QAction>
#include <QCheckBox>
#include <QComboBox>
#include <QDoubleSpinBox>
#include <QFrame>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QPainter>
#include <QScrollBar>
#include <QSpinBox>
#include <QStyleOption>
#include <QToolButton>
#include <QTreeView>

namespace {

/** How a widget kind talks to its editor: its change signal, and the setter the editor drives. */
struct KindConnections
{
    const char *changed;
    const char *changed2;
    const char *setter;
};

KindConnections connectionsOf(int kind)
{
    switch (kind) {
    case QInterfaceControl::ToolButton:
        return {SIGNAL(clicked()), nullptr, SLOT(click())};
    case QInterfaceControl::Label:
        return {nullptr, nullptr, SLOT(setText(QString))};
    case QInterfaceControl::ScrollBar:
    case QInterfaceControl::SpinBox:
        return {SIGNAL(valueChanged(int)), nullptr, SLOT(setValue(int))};
    case QInterfaceControl::LineEdit:
        return {SIGNAL(textChanged(QString)), nullptr, SLOT(setText(QString))};
    case QInterfaceControl::DoubleSpinBox:
        return {SIGNAL(valueChanged(double)), nullptr, SLOT(setValue(double))};
    case QInterfaceControl::CheckBox:
        return {SIGNAL(toggled(bool)), nullptr, SLOT(setChecked(bool))};
    case QInterfaceControl::ComboBox:
        return {SIGNAL(currentIndexChanged(int)), nullptr, SLOT(setCurrentIndex(int))};
    case QInterfaceControl::EditableComboBox:
        return {SIGNAL(editTextChanged(QString)), nullptr, SLOT(setEditText(QString))};
    case QInterfaceControl::ListView:
        return {SIGNAL(doubleClicked(QModelIndex)), nullptr, nullptr};
    case QInterfaceControl::TreeView:
        return {SIGNAL(clicked(QModelIndex)), SIGNAL(activated(QModelIndex)), nullptr};
    default:
        return {nullptr, nullptr, nullptr};
    }
}

QWidget *makeWidget(int kind, const QInterfaceControl::Parameters &parameters)
{
    switch (kind) {
    case QInterfaceControl::ToolButton:
        return new QToolButton;
    case QInterfaceControl::Label:
        return new QLabel;
    case QInterfaceControl::ScrollBar: {
        auto *bar = new QScrollBar(Qt::Horizontal);
        bar->setFocusPolicy(Qt::StrongFocus);
        return bar;
    }
    case QInterfaceControl::LineEdit:
        return new QLineEdit;
    case QInterfaceControl::SpinBox: {
        auto *spin = new QSpinBox;
        spin->setRange(int(parameters.minimum), int(parameters.maximum));
        return spin;
    }
    case QInterfaceControl::DoubleSpinBox: {
        auto *spin = new QDoubleSpinBox;
        spin->setDecimals(4);
        spin->setRange(parameters.minimum, parameters.maximum);
        spin->setSingleStep(parameters.step);
        return spin;
    }
    case QInterfaceControl::CheckBox:
        return new QCheckBox;
    case QInterfaceControl::ComboBox:
    case QInterfaceControl::EditableComboBox: {
        auto *combo = new QComboBox;
        combo->setEditable(kind == QInterfaceControl::EditableComboBox);
        return combo;
    }
    case QInterfaceControl::ListView: {
        auto *list = new QListView;
        list->setViewMode(parameters.viewMode);
        list->setUniformItemSizes(parameters.uniformSizes);
        list->setSelectionMode(parameters.multiSelection ? QAbstractItemView::ExtendedSelection
                                                         : QAbstractItemView::SingleSelection);
        return list;
    }
    case QInterfaceControl::TreeView: {
        auto *tree = new QTreeView;
        tree->header()->hide();
        return tree;
    }
    case QInterfaceControl::Line: {
        auto *line = new QFrame;
        line->setFrameShape(QFrame::HLine);
        line->setFrameShadow(QFrame::Sunken);
        return line;
    }
    default:
        // The palette widget comes with the sprite renderer; until then, and
        // for unknown kinds, the control has no widget and places nothing.
        return nullptr;
    }
}

/** Builds a widget of `kind` and wires it to its editor. */
QWidget *makeConnectedWidget(int kind, const QInterfaceControl::Parameters &parameters, QObject *editor,
                             const char *slot, const char *signal)
{
    QWidget *widget = makeWidget(kind, parameters);
    if (!widget || !editor)
        return widget;
    const KindConnections connections = connectionsOf(kind);
    if (slot && connections.changed)
        QObject::connect(widget, connections.changed, editor, slot);
    if (slot && connections.changed2)
        QObject::connect(widget, connections.changed2, editor, slot);
    if (signal && connections.setter)
        QObject::connect(editor, signal, widget, connections.setter);
    return widget;
}

void retranslateWidget(QWidget *widget, int kind, int titleId, const QInterfaceControl::Parameters &parameters,
                       QTranslationUnit *unit)
{
    if (!widget || !unit)
        return;
    switch (kind) {
    case QInterfaceControl::ToolButton:
        static_cast<QToolButton *>(widget)->setText(unit->title(titleId));
        break;
    case QInterfaceControl::Label:
        static_cast<QLabel *>(widget)->setText(unit->title(titleId));
        break;
    case QInterfaceControl::CheckBox:
        static_cast<QCheckBox *>(widget)->setText(unit->title(titleId));
        break;
    case QInterfaceControl::ComboBox: {
        // Refilling would tell the editor of a change to -1 and then to 0;
        // the choice stays what it was.
        auto *combo = static_cast<QComboBox *>(widget);
        const QSignalBlocker blocker(combo);
        const int current = combo->currentIndex();
        combo->clear();
        for (int id : parameters.items)
            combo->addItem(unit->title(id));
        combo->setCurrentIndex(current);
        break;
    }
    default:
        break;
    }
}

/** Puts `widget` into `parent` as a preset says. */
QWidget *placeWidget(QWidget *widget, QWidget *parent, const QString &name, QPoint position, QSize size)
{
    widget->setParent(parent);
    widget->setObjectName(name);
    widget->move(position);
    if (size.width() >= 0 && size.height() >= 0)
        widget->setFixedSize(size);
    else
        widget->resize(widget->sizeHint());
    return widget;
}

} // namespace

QInterfaceControl::QInterfaceControl(int kind, int titleId, const Parameters &parameters)
    : m_kind(kind)
    , m_titleId(titleId)
    , m_parameters(parameters)
{
}

QInterfaceControl::~QInterfaceControl() = default;

QInterfaceControlAction::QInterfaceControlAction(QAction *action)
    : QInterfaceControl(ToolButton, NoTitle)
    , m_action(action)
{
}

QInterfaceControlAction::~QInterfaceControlAction()
{
    detach();
}

void QInterfaceControlAction::detach()
{
    for (const QPointer<QToolButton> &button : std::as_const(m_buttons))
        delete button.data();
    m_buttons.clear();
}

QWidget *QInterfaceControlAction::widget(int index) const
{
    return m_buttons.value(index).data();
}

QWidget *QInterfaceControlAction::create(QWidget *parent, const QString &name, QPoint position, QSize size,
                                         QTranslationUnit *unit)
{
    Q_UNUSED(unit)
    auto *button = new QToolButton;
    button->setDefaultAction(m_action);
    // Unlike a toolbar, a panel doesn't hide the buttons of hidden actions.
    QObject::connect(m_action, &QAction::visibleChanged, button,
                     [button, action = m_action] { button->setVisible(action->isVisible()); });
    m_buttons.append(button);
    return placeWidget(button, parent, name, position, size);
}

void QInterfaceControlAction::retranslate(QTranslationUnit *unit)
{
    // The buttons show the action, whose texts the action manager keeps.
    Q_UNUSED(unit)
}

QInterfaceControlWidget::QInterfaceControlWidget(int kind, int titleId, QObject *editor, const char *slot,
                                                 const char *signal, const Parameters &parameters)
    : QInterfaceControl(kind, titleId, parameters)
    , m_widget(makeConnectedWidget(kind, parameters, editor, slot, signal))
{
}

QInterfaceControlWidget::~QInterfaceControlWidget()
{
    delete m_widget.data();
}

void QInterfaceControlWidget::detach()
{
    // Out of the panel but alive, with its value: a hidden widget without
    // a parent, which nobody shows until it is placed again.
    if (m_widget)
        m_widget->setParent(nullptr);
}

QWidget *QInterfaceControlWidget::widget(int index) const
{
    return index == 0 ? m_widget : nullptr;
}

QWidget *QInterfaceControlWidget::create(QWidget *parent, const QString &name, QPoint position, QSize size,
                                         QTranslationUnit *unit)
{
    if (!m_widget)
        return nullptr;
    retranslateWidget(m_widget, kind(), titleId(), parameters(), unit);
    return placeWidget(m_widget, parent, name, position, size);
}

void QInterfaceControlWidget::retranslate(QTranslationUnit *unit)
{
    retranslateWidget(m_widget, kind(), titleId(), parameters(), unit);
}

QInterfaceControlWidget2::QInterfaceControlWidget2(int kind, int titleId, QObject *editor, const char *slot,
                                                   const char *signal, const Parameters &parameters)
    : QInterfaceControl(kind, titleId, parameters)
    , m_widgets{makeConnectedWidget(kind, parameters, editor, slot, signal),
                makeConnectedWidget(kind, parameters, editor, slot, signal)}
{
}

QInterfaceControlWidget2::~QInterfaceControlWidget2()
{
    delete m_widgets[0].data();
    delete m_widgets[1].data();
}

void QInterfaceControlWidget2::detach()
{
    for (const QPointer<QWidget> &widget : m_widgets) {
        if (widget)
            widget->setParent(nullptr);
    }
    m_placed = 0;
}

QWidget *QInterfaceControlWidget2::widget(int index) const
{
    return index == 0 || index == 1 ? m_widgets[index] : nullptr;
}

QWidget *QInterfaceControlWidget2::create(QWidget *parent, const QString &name, QPoint position, QSize size,
                                          QTranslationUnit *unit)
{
    QWidget *widget = m_widgets[m_placed == 0 ? 0 : 1];
    if (!widget)
        return nullptr;
    ++m_placed;
    retranslateWidget(widget, kind(), titleId(), parameters(), unit);
    return placeWidget(widget, parent, name, position, size);
}

void QInterfaceControlWidget2::retranslate(QTranslationUnit *unit)
{
    for (const QPointer<QWidget> &widget : m_widgets)
        retranslateWidget(widget, kind(), titleId(), parameters(), unit);
}

QPanelWidget::QPanelWidget(QWidget *parent)
    : QWidget(parent)
{
    setTitleArea(m_titleTop, m_titleHeight);
}

void QPanelWidget::setTitleArea(int top, int height)
{
    m_titleTop = top;
    m_titleHeight = height;
    setContentsMargins(2, top + height, 2, 2);
    update();
}

void QPanelWidget::setTitle(const QString &title)
{
    m_title = title;
    update();
}

void QPanelWidget::paintEvent(QPaintEvent *event)
{
    Q_UNUSED(event)
    QStyleOption option;
    option.initFrom(this);
    QPainter painter(this);
    style()->drawPrimitive(QStyle::PE_Widget, &option, &painter, this);
    QFont font = painter.font();
    font.setBold(true);
    painter.setFont(font);
    painter.setPen(palette().color(QPalette::WindowText));
    const QRect area(6, m_titleTop, width() - 12, m_titleHeight);
    painter.drawText(area, Qt::AlignLeft | Qt::AlignVCenter, m_title);
}
