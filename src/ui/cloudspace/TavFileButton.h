// SPDX-License-Identifier: MIT
#pragma once

#include <QWidget>

class QPushButton;

/// The tile of one file or folder: its icon above its name. The first click selects, the next one opens. A
/// tile never deselects itself; whoever has several does that.
class TavFileButton : public QWidget
{
    Q_OBJECT

public:
    /// \param name the element's name, shown as it is
    /// \param type 0 for a folder, anything else for a file
    TavFileButton(QString name, int type, QWidget* parent);

    QString getName() const { return name; }
    /// Selects or deselects, and colours the tile accordingly.
    void setSelected(bool on);

    bool selected = false;

    /// All tiles are of one size, whatever their names: a grid of thousands needs not ask each.
    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return sizeHint(); }
    /// How wide they are with the font of \a widget.
    static int widthIn(const QWidget* widget);

signals:
    void iclicked(QString name);
    void iselected(QString name);

protected:
    bool event(QEvent* event) override;

private slots:
    void _onClicked();

private:
    QPushButton* icon;
    QString name;
    int type;
};
