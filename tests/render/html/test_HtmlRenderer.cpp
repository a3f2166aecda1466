#include "render/html/HtmlRenderer.h"

#include "DefaultDpi.h"
#include "app/settings/RenderSize.h"
#include "support/PrintQt.h"
#include "support/SampleImages.h"

#include <QAbstractTextDocumentLayout>
#include <QCoreApplication>
#include <QPainter>
#include <QTextDocument>
#include <QTextOption>

#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <vector>

namespace {

/// Switches Qt's own resolution to 96 dots per inch for as long as it lives.
class NinetySixDotsPerInch
{
public:
    NinetySixDotsPerInch() { QCoreApplication::setAttribute(Qt::AA_Use96Dpi, true); }
    ~NinetySixDotsPerInch() { QCoreApplication::setAttribute(Qt::AA_Use96Dpi, false); }

    NinetySixDotsPerInch(const NinetySixDotsPerInch&) = delete;
    NinetySixDotsPerInch& operator=(const NinetySixDotsPerInch&) = delete;
};

/// How a page is laid out: its size in layout units, and the scales by which
/// it is painted.
struct Layout
{
    QSizeF page;
    double horizontalScale;
    double verticalScale;
};

QImage paintedStepByStep(const QString& html, const QSize& size, const Layout& layout)
{
    QImage image(size, QImage::Format_RGB32);
    image.fill(Qt::white);
    QTextDocument document;
    QTextOption option = document.defaultTextOption();
    option.setWrapMode(QTextOption::WordWrap);
    document.setDefaultTextOption(option);
    document.setDocumentMargin(0.0);
    document.setTextWidth(layout.page.width());
    document.setPageSize(layout.page);
    document.setUseDesignMetrics(true);
    document.setHtml(html);
    document.documentLayout()->setPaintDevice(&image);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    painter.scale(layout.horizontalScale, layout.verticalScale);
    document.drawContents(&painter, QRectF());
    return image;
}

bool isBlank(const QImage& image)
{
    QImage white(image.size(), image.format());
    white.fill(Qt::white);
    return image == white;
}

const QString allSorts = QStringLiteral(
    u"<h1>Fax</h1><p align=\"right\">\u041f\u0440\u0438\u0432\u0435\u0442, \u00e9t\u00e9 \u2014 "
    u"\u4e2d\u6587</p><table border=\"1\" width=\"60%\"><tr><td bgcolor=\"#c04000\">left</td>"
    u"<td><b>right</b></td></tr></table><ul><li>one<li>two</ul><hr><p>"
    u"Donaudampfschifffahrtselektrizit\u00e4tenhauptbetriebswerkbauunterbeamtengesellschaft "
    u"and a line that is long enough to be broken where the page ends at its right side.</p>");

struct PixelRow
{
    const char* name;
    QSize size;
    LogicalDpi dpi;
    Layout layout;
};

// With 96 layout units to the inch.
const PixelRow pixelRows[] = {
    {"ALetterPageAt200DotsPerInch",
     {1700, 2200},
     {200, 200},
     {{816, 1056}, 200.0 / 96.0, 200.0 / 96.0}},
    {"AnA4PageAtStandardResolution",
     {1728, 1146},
     {204, 98},
     {{1728.0 * 96 / 204, 1146.0 * 96 / 98}, 204.0 / 96.0, 98.0 / 96.0}},
    {"AnA4PageAtUltrafineResolution",
     {3456, 4572},
     {408, 391},
     {{3456.0 * 96 / 408, 4572.0 * 96 / 391}, 408.0 / 96.0, 391.0 / 96.0}},
    {"APageAtTheResolutionOfTheLayout", {300, 200}, {96, 96}, {{300, 200}, 1.0, 1.0}},
    {"ANarrowPage", {150, 900}, {192, 192}, {{75, 450}, 2.0, 2.0}},
    {"APageBelowOneUnit", {1, 1}, {600, 600}, {{0.16, 0.16}, 6.25, 6.25}},
};

class HtmlPixels : public testing::TestWithParam<PixelRow>
{
    NinetySixDotsPerInch m_resolution;
};

TEST_P(HtmlPixels, AreThoseOfTheLayoutStepByStep)
{
    const PixelRow& row = GetParam();
    const QImage image = HtmlRenderer(allSorts).render({row.size, row.dpi}, QImage::Format_RGB32);
    EXPECT_TRUE(
        SampleImages::isSameImage(image, paintedStepByStep(allSorts, row.size, row.layout)));
}

INSTANTIATE_TEST_SUITE_P(HtmlRenderer, HtmlPixels, testing::ValuesIn(pixelRows),
                         [](const auto& test) { return std::string{test.param.name}; });

QString htmlOf(const char* text)
{
    return QString::fromUtf8(text);
}

const RenderSize letterAt200{QSize(1700, 2200), LogicalDpi{200, 200}};

QImage rendered(const QString& html, const RenderSize& size = letterAt200)
{
    return HtmlRenderer(html).render(size, QImage::Format_RGB32);
}

/// The smallest rectangle around everything of one colour.
QRect extentOf(const QImage& image, QRgb colour)
{
    QRect extent;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            if (image.pixel(x, y) == colour) {
                extent |= QRect(x, y, 1, 1);
            }
        }
    }
    return extent;
}

constexpr QRgb red = 0xFFFF0000;
constexpr QRgb green = 0xFF00FF00;
constexpr QRgb blue = 0xFF0000FF;

// A coloured field of a height that no font plays a part in.
QString field(const char* colour, int width, int height)
{
    return QStringLiteral("<table width=\"%1\" cellspacing=\"0\" cellpadding=\"0\"><tr>"
                          "<td bgcolor=\"%2\" style=\"padding-top:%3px\"></td></tr></table>")
        .arg(width)
        .arg(QLatin1String(colour))
        .arg(height);
}

TEST(HtmlRenderer, Lays816UnitsOverAWidthOfALetterPageAt96DotsPerInch)
{
    const NinetySixDotsPerInch resolution;
    EXPECT_EQ(extentOf(rendered(field("#ff0000", 816, 500)), red).width(), 1700);
    EXPECT_EQ(extentOf(rendered(field("#ff0000", 408, 500)), red).width(), 850);
}

TEST(HtmlRenderer, FollowsTheResolutionOfQt)
{
    const double layoutDpi = qt_defaultDpi();
    const Layout layout{
        {1700 * layoutDpi / 200, 2200 * layoutDpi / 200}, 200 / layoutDpi, 200 / layoutDpi};
    EXPECT_TRUE(SampleImages::isSameImage(rendered(allSorts),
                                          paintedStepByStep(allSorts, letterAt200.size, layout)));
}

TEST(HtmlRenderer, ScalesBothDirectionsOnTheirOwn)
{
    const NinetySixDotsPerInch resolution;
    const RenderSize size{QSize(1728, 2292), LogicalDpi{204, 98}};
    const QRect tall = extentOf(rendered(field("#ff0000", 480, 960), size), red);
    const QRect low = extentOf(rendered(field("#ff0000", 480, 480), size), red);
    EXPECT_EQ(tall.width(), 1020);
    // Without the text line of the field, of which the font decides the height.
    EXPECT_EQ(tall.height() - low.height(), 490);
}

TEST(HtmlRenderer, HasNoMarginOfItsOwn)
{
    EXPECT_EQ(extentOf(rendered(field("#ff0000", 300, 300)), red).topLeft(), QPoint(0, 0));
}

TEST(HtmlRenderer, CutsOffWhatIsBelowThePage)
{
    // Three fields that are three screen pages high altogether.
    const QString html =
        field("#ff0000", 300, 600) + field("#00ff00", 300, 200) + field("#0000ff", 300, 2200);
    const QImage image = rendered(html, {QSize(300, 1000), LogicalDpi{100, 100}});
    EXPECT_EQ(image.size(), QSize(300, 1000));
    EXPECT_GE(extentOf(image, red).height(), 600);
    EXPECT_FALSE(extentOf(image, green).isEmpty());
    EXPECT_TRUE(extentOf(image, blue).isEmpty());
}

TEST(HtmlRenderer, CutsOffWhatIsRightOfThePage)
{
    const QImage image = rendered(field("#ff0000", 2000, 100), {QSize(300, 300), {100, 100}});
    EXPECT_EQ(extentOf(image, red).width(), 300);
}

TEST(HtmlRenderer, DropsTheLineThatWouldStraddleTheBottom)
{
    const QString html =
        QStringLiteral("<p>") + QStringLiteral("line<br>").repeated(100) + QStringLiteral("</p>");
    const RenderSize wholeLines{QSize(100, 1000), {100, 100}};
    const QImage whole = rendered(html, wholeLines);
    const QRect text = extentOf(whole, qRgb(0, 0, 0));
    ASSERT_FALSE(text.isEmpty());
    // Cut through the last line that was drawn: all of it goes.
    const int cut = text.bottom() - 2;
    const QImage image = rendered(html, {QSize(100, cut), {100, 100}});
    EXPECT_LT(extentOf(image, qRgb(0, 0, 0)).bottom(), cut - 3);
}

TEST(HtmlRenderer, BreaksLinesOnlyBetweenWords)
{
    const QString word = QStringLiteral("word").repeated(100);
    const QImage image = rendered(QStringLiteral("<p>") + word + QStringLiteral("</p>"),
                                  {QSize(200, 500), {100, 100}});
    const QImage oneLine = rendered(QStringLiteral("<p>word</p>"), {QSize(200, 500), {100, 100}});
    EXPECT_EQ(extentOf(image, qRgb(0, 0, 0)).bottom(), extentOf(oneLine, qRgb(0, 0, 0)).bottom());
    EXPECT_GE(extentOf(image, qRgb(0, 0, 0)).right(), 190);
}

struct TextRow
{
    const char* name;
    QString text;
};

const TextRow textRows[] = {
    {"Latin", QStringLiteral("Fax")},
    {"Accented", QStringLiteral(u"\u00e9\u00e0\u00fc")},
    {"Cyrillic", QStringLiteral(u"\u041f\u0440\u0438")},
    {"Greek", QStringLiteral(u"\u03b1\u03b2\u03b3")},
};

class HtmlText : public testing::TestWithParam<TextRow>
{
};

TEST_P(HtmlText, IsReallyDrawn)
{
    const auto html = [](const QString& text) { return QStringLiteral("<p>%1</p>").arg(text); };
    const RenderSize size{QSize(400, 100), {200, 200}};
    const QImage image = rendered(html(GetParam().text), size);
    EXPECT_FALSE(isBlank(image));
    // What has no glyph is drawn as a box, the same for every such character.
    EXPECT_FALSE(image == rendered(html(QStringLiteral(u"\U0010fffd").repeated(3)), size));
    EXPECT_FALSE(image == rendered(html(QStringLiteral("???")), size));
}

INSTANTIATE_TEST_SUITE_P(HtmlRenderer, HtmlText, testing::ValuesIn(textRows),
                         [](const auto& test) { return std::string{test.param.name}; });

struct FormatRow
{
    const char* name;
    QImage::Format format;
};

// The program itself uses the first only. How Qt rounds colours in the others
// depends on where in the memory the pixels lie.
const FormatRow formatRows[] = {
    {"Rgb32", QImage::Format_RGB32},
    {"Argb32Premultiplied", QImage::Format_ARGB32_Premultiplied},
    {"Grey", QImage::Format_Grayscale8},
    {"Rgb16", QImage::Format_RGB16},
};

class HtmlFormat : public testing::TestWithParam<FormatRow>
{
    NinetySixDotsPerInch m_resolution;
};

TEST_P(HtmlFormat, IsThatOfThePage)
{
    const QSize size(400, 300);
    const QImage image = HtmlRenderer(allSorts).render({size, {192, 192}}, GetParam().format);
    EXPECT_EQ(image.format(), GetParam().format);
    EXPECT_EQ(image.size(), size);
    EXPECT_FALSE(isBlank(image));
}

INSTANTIATE_TEST_SUITE_P(HtmlRenderer, HtmlFormat, testing::ValuesIn(formatRows),
                         [](const auto& test) { return std::string{test.param.name}; });

TEST(HtmlRenderer, LeavesAPageWithoutContentWhite)
{
    EXPECT_TRUE(isBlank(rendered(htmlOf("<p></p>"), {QSize(100, 100), {100, 100}})));
}

struct RefusalRow
{
    const char* name;
    QString text;
    RenderSize size;
    QImage::Format format = QImage::Format_RGB32;
};

const QString someHtml = QStringLiteral("<p>text</p>");
const RenderSize someSize{QSize(10, 10), LogicalDpi{100, 100}};
constexpr int hugeSide = std::numeric_limits<int>::max();

const RefusalRow refusalRows[] = {
    {"AnEmptyText", QString(), someSize},
    {"PlainWords", QStringLiteral("Just words, without any tag."), someSize},
    {"PlainWordsWithAnAngleBracket", QStringLiteral("2 < 3"), someSize},
    {"AWidthOfZero", someHtml, {QSize(0, 10), {100, 100}}},
    {"AHeightOfZero", someHtml, {QSize(10, 0), {100, 100}}},
    {"ANegativeWidth", someHtml, {QSize(-1, 10), {100, 100}}},
    {"ANegativeHeight", someHtml, {QSize(10, -1), {100, 100}}},
    {"AnInvalidSize", someHtml, {QSize(), {100, 100}}},
    {"AHorizontalResolutionOfZero", someHtml, {QSize(10, 10), {0, 100}}},
    {"AVerticalResolutionOfZero", someHtml, {QSize(10, 10), {100, 0}}},
    {"AnInvalidFormat", someHtml, someSize, QImage::Format_Invalid},
    {"AFormatThatCannotBePaintedOn", someHtml, someSize, QImage::Format_Indexed8},
    {"AnImageThatCannotBeMade", someHtml, {QSize(hugeSide, hugeSide), {100, 100}}},
};

class HtmlRefusal : public testing::TestWithParam<RefusalRow>
{
};

TEST_P(HtmlRefusal, IsANullImage)
{
    const RefusalRow& row = GetParam();
    EXPECT_TRUE(HtmlRenderer(row.text).render(row.size, row.format).isNull());
}

INSTANTIATE_TEST_SUITE_P(HtmlRenderer, HtmlRefusal, testing::ValuesIn(refusalRows),
                         [](const auto& test) { return std::string{test.param.name}; });

} // namespace
