// SPDX-License-Identifier: MIT
#pragma once

#include <QLabel>

namespace tav {

/// A label that elides its text in the middle where there is no room for all of it, and then has the whole
/// text in its tooltip. text() is always the whole text. It is shown as it is, never as rich text.
class ElidedLabel : public QLabel
{
    Q_OBJECT

public:
    /// \param widthLimit the widest that its size hint becomes, in pixels
    /// \param lineLimit how many lines it always has room for
    ElidedLabel(const QString& text, int widthLimit, int lineLimit = 1);

    bool isCut() const { return fitting().join(QString()) != text(); }

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;
    bool event(QEvent* event) override;

protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    /// The colours to paint with.
    virtual QPalette colours() const { return palette(); }

private:
    QStringList fitting() const;

    int maximumHint;
    int maximumLines;
};

/// \a text in lines of \a width pixels, broken between words where that is possible. What exceeds
/// \a maximumLines is elided in the middle.
QStringList fittingLines(const QString& text, const QFont& font, int width, int maximumLines);

/// \a text as a tooltip that shows it as it is: Qt would take a name with a tag in it for rich text.
QString plainToolTip(const QString& text);

} // namespace tav
