#pragma once

#include <QImage>
#include <QString>

struct RenderSize;

/// Lays HTML out with Qt's rich text and paints it on one page; what does not
/// fit is cut off.
class HtmlRenderer
{
public:
    explicit HtmlRenderer(const QString& html);

    /// The painted page; null if Qt does not take the text for rich text, if a
    /// side or a resolution is below 1, or if Qt cannot paint on `format`.
    QImage render(const RenderSize& renderSize, QImage::Format format) const;

private:
    QString m_html;
};
