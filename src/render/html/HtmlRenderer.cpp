#include "render/html/HtmlRenderer.h"

#include "app/settings/RenderSize.h"
#include "render/html/HtmlDocument.h"

#include <QAbstractTextDocumentLayout>
#include <QPainter>
#include <QTextOption>

QT_BEGIN_NAMESPACE
// The resolution in dots per inch that Qt lays text out for when no screen says
// otherwise. Qt exports it without declaring it in a public header.
Q_GUI_EXPORT int qt_defaultDpi();
QT_END_NAMESPACE

HtmlRenderer::HtmlRenderer(const QString& html) : m_html(html) {}

QImage HtmlRenderer::render(const RenderSize& renderSize, QImage::Format format) const
{
    const auto [size, dpi] = renderSize;
    if (!Qt::mightBeRichText(m_html) || size.isEmpty() || dpi.horizontal == 0 ||
        dpi.vertical == 0 || format == QImage::Format_Invalid) {
        return QImage();
    }

    QImage page(size, format);
    if (page.isNull()) {
        return page;
    }
    page.fill(Qt::white);

    // The text is laid out for Qt's own resolution and then scaled up to that of
    // the page, so that its sizes come out right in inches.
    const double layoutDpi = qt_defaultDpi();
    const double pageWidth = size.width() * layoutDpi / dpi.horizontal;
    const double pageHeight = size.height() * layoutDpi / dpi.vertical;

    HtmlDocument document;
    QTextOption option = document.defaultTextOption();
    option.setWrapMode(QTextOption::WordWrap);
    document.setDefaultTextOption(option);
    document.setDocumentMargin(0.0);
    document.setTextWidth(pageWidth);
    // The page height makes Qt drop a line that would straddle the bottom edge.
    document.setPageSize(QSizeF(pageWidth, pageHeight));
    document.setUseDesignMetrics(true);
    document.setHtml(m_html);
    document.documentLayout()->setPaintDevice(&page);

    QPainter painter;
    if (!painter.begin(&page)) {
        return QImage();
    }
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    painter.scale(dpi.horizontal / layoutDpi, dpi.vertical / layoutDpi);
    document.drawContents(&painter);
    painter.end();
    return page;
}
