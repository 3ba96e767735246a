#include "aboutdlg.h"

#include "kestrada_version.h"

#include <QDialogButtonBox>
#include <QHBoxLayout>
#include <QIcon>
#include <QLabel>
#include <QStyle>
#include <QVBoxLayout>

AboutDlg::AboutDlg(QWidget *parent)
    : QDialog(parent)
    , m_text(new QLabel(this))
{
    setWindowTitle(tr("About Kestrada"));

    auto *icon = new QLabel(this);
    const int iconSize = style()->pixelMetric(QStyle::PM_MessageBoxIconSize, nullptr, this);
    icon->setPixmap(QIcon(QStringLiteral(":/imgs/Imgs/mugen.png")).pixmap(iconSize));
    icon->setAlignment(Qt::AlignTop | Qt::AlignHCenter);

    // Built against one Qt, it may run on a newer one: both are worth knowing in a report.
    const QString qt = QString::fromLatin1(qVersion()) == QLatin1String(QT_VERSION_STR)
        ? QString::fromLatin1(qVersion())
        : tr("%1 (built with %2)").arg(QString::fromLatin1(qVersion()), QLatin1String(QT_VERSION_STR));
    m_text->setObjectName(QStringLiteral("text"));
    m_text->setTextFormat(Qt::RichText);
    m_text->setTextInteractionFlags(Qt::TextSelectableByMouse);
    m_text->setWordWrap(true);
    m_text->setText(
        QStringLiteral("<h2>Kestrada</h2><p>%1</p><p>%2</p><p>%3</p><p><b>%4</b></p><ul>"
                       "<li>%5</li><li>%6</li><li>%7</li><li>%8</li></ul><p>%9</p>")
            .arg(tr("Version %1").arg(QLatin1String(KESTRADA_VERSION)),
                 tr("Running on Qt %1.").arg(qt),
                 tr("An authoring environment for M.U.G.E.N. and Ikemen GO content: characters, "
                    "stages, storyboards and fonts."),
                 tr("Credits"),
                 tr("Qt, the toolkit of the whole program: The Qt Company and the Qt contributors, "
                    "used under the GNU LGPL, version 3."),
                 tr("The Breeze icon theme: Uri Herrera and the KDE contributors, "
                    "under the GNU LGPL, version 3 or later."),
                 tr("uchardet, which recognises the encoding of text files: "
                    "the uchardet authors, under the Mozilla Public License 1.1, the GNU GPL, version 2 or "
                    "later, or the GNU LGPL, version 2.1 or later."),
                 tr("The vocabulary of the engine's languages follows the M.U.G.E.N. documentation "
                    "by Elecbyte."),
                 tr("M.U.G.E.N. is Elecbyte's engine, Ikemen GO that of its own authors; "
                    "Kestrada comes from neither of them.")));

    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Close, this);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);

    auto *row = new QHBoxLayout;
    row->addWidget(icon);
    row->addWidget(m_text, 1);
    auto *layout = new QVBoxLayout(this);
    layout->addLayout(row);
    layout->addWidget(buttons);
    layout->setSizeConstraint(QLayout::SetFixedSize);
    // Wide enough for the lines to wrap as sentences, in the font's own measure.
    m_text->setMinimumWidth(fontMetrics().averageCharWidth() * 60);
}

QString AboutDlg::text() const
{
    return m_text->text();
}
