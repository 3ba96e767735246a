#pragma once

#include <QList>
#include <QListView>
#include <QPoint>
#include <QPointer>
#include <QSize>
#include <QWidget>

class QAction;
class QToolButton;
class QTranslationUnit;

/** What some kinds of controls need to be built. */
struct QControlParameters
{
    /** Range and step of the spin boxes (kinds 5 and 6). */
    double minimum = -99999;
    double maximum = 99999;
    double step = 1;
    /** The title ids of the items of a combo box (kinds 8 and 9). */
    QList<int> items;
    /** Kind 10: icon or list mode, uniform item sizes, extended (multi) selection. */
    QListView::ViewMode viewMode = QListView::ListMode;
    bool uniformSizes = false;
    bool multiSelection = false;
};

/**
 * A named thing that a preset can place in a panel: an action as a tool
 * button, or a widget of one of the kinds below. Editors declare controls
 * and never place them; the preset says where each stands, so a preset can
 * rearrange the whole window.
 */
class QInterfaceControl
{
public:
    enum Kind {
        NoKind = 0,
        ToolButton = 1,
        Label = 2,
        ScrollBar = 3,
        LineEdit = 4,
        SpinBox = 5,
        DoubleSpinBox = 6,
        CheckBox = 7,
        ComboBox = 8,
        EditableComboBox = 9,
        ListView = 10,
        TreeView = 11,
        PaletteWidget = 12,
        Line = 13
    };
    /** Title ids from here on mean "no text". */
    static constexpr int NoTitle = 346;

    /** What some kinds need to be built. */
    using Parameters = QControlParameters;

    QInterfaceControl(int kind, int titleId, const Parameters &parameters = Parameters());
    virtual ~QInterfaceControl();

    int kind() const { return m_kind; }
    int titleId() const { return m_titleId; }

    /** Takes the control out of every panel; its widgets keep their state. */
    virtual void detach() = 0;
    /** The widget made for the placing `index`; null when there is none. */
    virtual QWidget *widget(int index = 0) const = 0;
    /**
     * Places the control in `parent` at `position` (unscaled by now: the
     * caller scales), with a fixed `size` when it is valid, and returns the
     * widget. Null when the control has no widget.
     */
    virtual QWidget *create(QWidget *parent, const QString &name, QPoint position, QSize size,
                            QTranslationUnit *unit) = 0;
    virtual void retranslate(QTranslationUnit *unit) = 0;

protected:
    const Parameters &parameters() const { return m_parameters; }

private:
    int m_kind;
    int m_titleId;
    Parameters m_parameters;
};

/** An action, placed as a tool button as many times as a preset wants. */
class QInterfaceControlAction : public QInterfaceControl
{
public:
    explicit QInterfaceControlAction(QAction *action);
    ~QInterfaceControlAction() override;

    QAction *action() const { return m_action; }

    void detach() override;
    QWidget *widget(int index = 0) const override;
    QWidget *create(QWidget *parent, const QString &name, QPoint position, QSize size,
                    QTranslationUnit *unit) override;
    void retranslate(QTranslationUnit *unit) override;

private:
    QAction *m_action;
    QList<QPointer<QToolButton>> m_buttons;
};

/**
 * A widget of one kind, made at construction and connected both ways to its
 * editor: the widget's change signal to `slot`, and the editor's `signal` to
 * the widget's setter (see the table in the .cpp). `slot` and `signal` are
 * SLOT() and SIGNAL() strings and may be null. One control stands in one
 * place: a second create() moves it.
 */
class QInterfaceControlWidget : public QInterfaceControl
{
public:
    QInterfaceControlWidget(int kind, int titleId, QObject *editor, const char *slot, const char *signal,
                            const Parameters &parameters = Parameters());
    ~QInterfaceControlWidget() override;

    void detach() override;
    QWidget *widget(int index = 0) const override;
    QWidget *create(QWidget *parent, const QString &name, QPoint position, QSize size,
                    QTranslationUnit *unit) override;
    void retranslate(QTranslationUnit *unit) override;

private:
    // Guarded: a panel that goes before its controls takes the widget with it.
    QPointer<QWidget> m_widget;
};

/**
 * Two widgets of one kind, for a control that stands in two places at once
 * (a spin box both in the panel and in a toolbar): the first placing after
 * a detach takes the first widget, every later one the second.
 */
class QInterfaceControlWidget2 : public QInterfaceControl
{
public:
    QInterfaceControlWidget2(int kind, int titleId, QObject *editor, const char *slot, const char *signal,
                             const Parameters &parameters = Parameters());
    ~QInterfaceControlWidget2() override;

    void detach() override;
    QWidget *widget(int index = 0) const override;
    QWidget *create(QWidget *parent, const QString &name, QPoint position, QSize size,
                    QTranslationUnit *unit) override;
    void retranslate(QTranslationUnit *unit) override;

private:
    QPointer<QWidget> m_widgets[2];
    int m_placed = 0;
};

/**
 * A widget with a title area at its top, as the left and right panels are.
 * The title is drawn bold in the window text colour; a style sheet can
 * restyle the panel under its class name.
 */
class QPanelWidget : public QWidget
{
    Q_OBJECT

public:
    explicit QPanelWidget(QWidget *parent = nullptr);

    QString title() const { return m_title; }
    /** The top and the height of the title area, in pixels. */
    void setTitleArea(int top, int height);

public Q_SLOTS:
    void setTitle(const QString &title);

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    QString m_title;
    int m_titleTop = 0;
    int m_titleHeight = 30;
};
