#include "app/settings/RenderSize.h"
#include "render/html/HtmlRenderer.h"

#include <QtGlobal>

#include <gtest/gtest.h>

#include <algorithm>
#include <ostream>
#include <vector>

// Where the lines of a cover page are, whatever the version of Qt: the same words in
// the same lines, at the same place across the page. Down the page, Qt 6 no longer
// rounds the height of a line up to whole units of the layout, of which there are 100
// to the inch.

namespace {

/// Rows of the page that have something dark on them, down to the next white row.
struct Band
{
    int top;
    int bottom;
    int left;
    int right;
};

void PrintTo(const Band& band, std::ostream* stream)
{
    *stream << "rows " << band.top << " to " << band.bottom << ", columns " << band.left << " to "
            << band.right;
}

std::vector<Band> bandsOf(const QImage& page)
{
    std::vector<Band> bands;
    bool isInside = false;
    for (int y = 0; y < page.height(); ++y) {
        bool isDark = false;
        for (int x = 0; x < page.width(); ++x) {
            if (qGray(page.pixel(x, y)) >= 128) {
                continue;
            }
            if (!isInside) {
                bands.push_back({y, y, x, x});
                isInside = true;
            }
            isDark = true;
            Band& band = bands.back();
            band.bottom = y;
            band.left = std::min(band.left, x);
            band.right = std::max(band.right, x);
        }
        isInside = isDark;
    }
    return bands;
}

// A title, a paragraph of the default size, a table, a list, and small print.
const QString cover = QStringLiteral(
    "<html><body style=\"font-family: 'DejaVu Sans'\"><h1>FACSIMILE</h1>"
    "<p>Wherever the words of this paragraph reach the right side of the page, the next of "
    "them goes to the line below, and no other word than with any other version of Qt.</p>"
    "<table border=\"1\" width=\"60%\" cellpadding=\"4\"><tr><td>To</td><td>Harbour Authority"
    "</td></tr><tr><td>From</td><td>Instruments</td></tr></table>"
    "<ul><li>one sheet of paper</li><li>another one</li></ul>"
    "<p style=\"font-size: 9pt\">This fax is meant for the person named above only. If it has "
    "reached you by mistake, please let us know, and destroy it. This is what small print says "
    "that nobody reads, over three lines of a page, so that the heights of lines add up.</p>"
    "</body></html>");

// With Qt 5.
const std::vector<Band> expectedBands = {
    {13, 61, 6, 389},    {106, 137, 1, 1669}, {146, 177, 1, 1177},
    {202, 233, 16, 728}, {268, 291, 20, 624}, {347, 378, 59, 409},
    {389, 413, 59, 290}, {453, 476, 0, 1678}, {483, 506, 1, 1368},
};

// How far up or down a row may be from where it is with Qt 5.
#if QT_VERSION < QT_VERSION_CHECK(6, 0, 0)
double rowsOff(int /*row*/)
{
    return 0.0;
}
#else
double rowsOff(int row)
{
    return 2.0 + row / 40.0;
}
#endif

TEST(CoverLines, AreAtTheirPlaces)
{
    const QImage page =
        HtmlRenderer(cover).render({QSize(1728, 2292), {204, 196}}, QImage::Format_RGB32);
    const std::vector<Band> bands = bandsOf(page);
    ASSERT_EQ(bands.size(), expectedBands.size());
    for (std::size_t i = 0; i < bands.size(); ++i) {
        const Band& expected = expectedBands[i];
        SCOPED_TRACE(testing::PrintToString(expected));
        EXPECT_EQ(bands[i].left, expected.left);
        EXPECT_EQ(bands[i].right, expected.right);
        EXPECT_NEAR(bands[i].top, expected.top, rowsOff(expected.top));
        EXPECT_NEAR(bands[i].bottom, expected.bottom, rowsOff(expected.bottom));
    }
}

// A page that has room for all lines with Qt 5, and no more.
TEST(CoverLines, AreAllOnAPageThatHasRoomForThem)
{
    const int height = expectedBands.back().bottom + 12;
    const QImage page =
        HtmlRenderer(cover).render({QSize(1728, height), {204, 196}}, QImage::Format_RGB32);
    EXPECT_EQ(bandsOf(page).size(), expectedBands.size());
}

} // namespace
