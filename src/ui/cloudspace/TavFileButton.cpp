// SPDX-License-Identifier: MIT
#include "ui/cloudspace/TavFileButton.h"

#include "core/Screen.h"
#include "ui/ElidedLabel.h"
#include "ui/FocusMark.h"
#include "ui/cloudspace/EnterKey.h"

#include <QCoreApplication>
#include <QHBoxLayout>
#include <QHelpEvent>
#include <QPainter>
#include <QPointer>
#include <QToolTip>

using namespace tav;

namespace {

const QSize iconSize(70, 90);
constexpr int margin = 4;
constexpr int nameLines = 2;

/// A name of usual length fits.
int nameWidth(const QWidget* widget)
{
    return qMax(int(dpi_scaled(90.0)), widget->fontMetrics().averageCharWidth() * 17);
}

/// Qt styles a new widget with the next events, seen or not. One that is scrolled away can wait until it is
/// shown: with thousands, that is much of the time that they take.
bool isTooEarly(const QWidget* widget, const QEvent* event)
{
    return event->type() == QEvent::PolishRequest && !widget->isVisible();
}

bool isArrow(int key)
{
    return key == Qt::Key_Left || key == Qt::Key_Right || key == Qt::Key_Up || key == Qt::Key_Down;
}

/// Loaded once, since thousands of tiles use them, and destroyed before the application object.
struct Icons : QObject
{
    Icons()
        : QObject(qApp)
    {
    }
    const QIcon folder{":/tav_cloud_platform_sdk/Resources/folder.png"};
    const QIcon file{":/tav_cloud_platform_sdk/Resources/file.png"};
};

const QIcon& iconOf(int type)
{
    static QPointer<Icons> kept;
    Icons* icons = kept;
    if (!icons)
        kept = icons = new Icons;
    return type == 0 ? icons->folder : icons->file;
}

class NameLabel : public ElidedLabel
{
public:
    using ElidedLabel::ElidedLabel;

protected:
    bool event(QEvent* event) override
    {
        // Left to the tile, which has a tooltip of its own.
        return event->type() == QEvent::ToolTip ? QLabel::event(event)
                                                : isTooEarly(this, event) || ElidedLabel::event(event);
    }

    /// Names stand on the tile's own colours, in a dark palette too.
    QPalette colours() const override
    {
        QPalette black = palette();
        black.setColor(foregroundRole(), Qt::black);
        return black;
    }
};

QHBoxLayout* centred(QWidget* widget)
{
    auto* row = new QHBoxLayout;
    row->setSpacing(0);
    row->addStretch();
    row->addWidget(widget);
    row->addStretch();
    return row;
}

} // namespace

/// Enter clicks it as Space does. The arrow keys are left to the area.
class TavFileButton::IconButton : public QPushButton
{
public:
    using QPushButton::QPushButton;

    QString badge; ///< stands in a corner of the icon

protected:
    bool event(QEvent* event) override { return isTooEarly(this, event) || QPushButton::event(event); }

    void keyPressEvent(QKeyEvent* event) override
    {
        if (isEnter(event))
            click();
        else if (isArrow(event->key()))
            event->ignore();
        else
            QPushButton::keyPressEvent(event);
    }

    void paintEvent(QPaintEvent* event) override
    {
        QPushButton::paintEvent(event);
        if (badge.isEmpty())
            return;
        QPainter painter(this);
        const int height = fontMetrics().height();
        QRect place(0, 0, qMax(fontMetrics().horizontalAdvance(badge) + height / 2, height), height);
        QRect picture(QPoint(), iconSize());
        picture.moveCenter(rect().center());
        place.moveBottomRight(picture.bottomRight());
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(Qt::NoPen);
        painter.setBrush(QColor(0x30, 0x30, 0x30));
        painter.drawRoundedRect(place, height / 2.0, height / 2.0);
        painter.setPen(Qt::white);
        painter.drawText(place, Qt::AlignCenter, badge);
    }
};

TavFileButton::TavFileButton(QString elementName, int elementType, QWidget* parent)
    : QWidget(parent)
    , icon(new IconButton(this))
    , name(std::move(elementName))
    , type(elementType)
{
    icon->setMinimumSize(int(dpi_scaled(70.0)), int(dpi_scaled(90.0)));
    icon->setIcon(iconOf(type));
    icon->setIconSize(iconSize);
    icon->setStyleSheet("QPushButton{border:none;}"); // which leaves a focused button without a mark
    new FocusMark(icon, Qt::black); // on the tile's own colours
    icon->setAutoDefault(false);
    icon->setAccessibleName(name);
    label = new NameLabel(name, nameWidth(this), nameLines);
    label->setAlignment(Qt::AlignHCenter | Qt::AlignTop);
    // Its stretches would otherwise take all the room in a row of few tiles.
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    // The colour of a selected tile fills all of it.
    setAttribute(Qt::WA_StyledBackground);

    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(margin, margin, margin, margin);
    layout->addLayout(centred(icon));
    layout->addLayout(centred(label));
    setFocusProxy(icon);
    connect(icon, &QPushButton::clicked, this, &TavFileButton::_onClicked);
}

QSize TavFileButton::sizeHint() const
{
    const int height = qMax(icon->minimumHeight(), iconSize.height()) + layout()->spacing()
        + label->minimumSizeHint().height();
    return {widthIn(this), height + 2 * margin};
}

int TavFileButton::widthIn(const QWidget* widget)
{
    return nameWidth(widget) + 2 * margin;
}

/// Shows the whole name where the tile elides it, and not in the colours of the tile's style sheet.
bool TavFileButton::event(QEvent* event)
{
    if (event->type() != QEvent::ToolTip)
        return isTooEarly(this, event) || QWidget::event(event);
    const bool tellsMore = label->isCut() || !whichOfName.isEmpty();
    QToolTip::showText(
        static_cast<QHelpEvent*>(event)->globalPos(), tellsMore ? plainToolTip(getDescription()) : QString());
    return true;
}

void TavFileButton::setNamesake(int number, const QString& which)
{
    whichOfName = which;
    icon->badge = QString::number(number);
    icon->setAccessibleName(getDescription());
}

QString TavFileButton::getDescription() const
{
    return whichOfName.isEmpty() ? name : QStringLiteral("%1 (%2)").arg(name, whichOfName);
}

void TavFileButton::setSelected(bool on)
{
    selected = on;
    setStyleSheet(on ? "background-color:#00ffff;" : "background-color:#ffffff;");
}

void TavFileButton::_onClicked()
{
    if (selected) {
        emit iclicked(name);
        return;
    }
    setSelected(true);
    emit iselected(name);
}
