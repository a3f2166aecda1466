#include "bilevel/ErrorDiffusion.h"

#include "bilevel/BilevelImage.h"

#include <QPoint>
#include <QRect>
#include <QSize>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace {

constexpr int byteBits = 8;

constexpr int whiteLevel = 255;
constexpr int threshold = 128; // below it a pixel is black

// A pixel depends on its left neighbour and on three pixels of the row above,
// so a row can follow the one above at a distance of two pixels. Sixteen rows run
// at a time as such a wavefront, each a lane: at step t lane k is at column
// t - 2 * k. The lanes do the same work, which compilers turn into vectors.
constexpr int lanes = 16;
constexpr int lag = 2;
constexpr int lagSum = lag * (lanes - 1);

// The errors of the last steps on their way to other pixels.
struct Spread
{
    int toRight[lanes] = {};       // to the same row, wanted at the next step
    int toBelow[lanes + 1] = {};   // element k to lane k, wanted at the next step
    int straight[lanes] = {};      // to the pixel below, one step old
    int belowRight[lanes] = {};    // to the pixel below right, one step old
    int belowRightOld[lanes] = {}; // the same, two steps old
};

// One step of all lanes of rows that are `width` pixels wide. A lane that is
// outside of its row spreads nothing. The result has lane 0 in bit 15, 1 for
// black.
//
// Not inlined: in the loop over the steps, GCC would unroll the loops over the
// lanes instead of turning them into vectors.
[[gnu::noinline]] std::uint16_t advance(Spread& spread, int step, int width,
                                        const std::uint8_t* levels)
{
    int errors[lanes];
    int isBlack[lanes]; // all bits set or none: masks are what compilers vectorise
    for (int lane = 0; lane < lanes; ++lane) {
        const int column = step - lag * lane;
        const int isInside = -static_cast<int>(column >= 0) & -static_cast<int>(column < width);
        const int level = (levels[lane] + spread.toRight[lane] + spread.toBelow[lane]) & isInside;
        isBlack[lane] = -static_cast<int>(level < threshold) & isInside;
        errors[lane] = level - (whiteLevel & ~isBlack[lane] & isInside);
    }
    for (int lane = 0; lane < lanes; ++lane) {
        const int right = (7 * errors[lane] + 8) >> 4;
        const int straight = (5 * errors[lane] + 8) >> 4;
        const int left = (3 * errors[lane] + 8) >> 4;
        spread.toRight[lane] = right;
        spread.toBelow[lane + 1] = left + spread.straight[lane] + spread.belowRightOld[lane];
        spread.straight[lane] = straight;
        spread.belowRightOld[lane] = spread.belowRight[lane];
        spread.belowRight[lane] = errors[lane] - right - straight - left;
    }
    unsigned bits = 0;
    for (int lane = 0; lane < lanes; ++lane) {
        bits |= static_cast<unsigned>(isBlack[lane]) & (0x8000U >> lane);
    }
    return static_cast<std::uint16_t>(bits);
}

// As many rows of a page as there are lanes.
class Wavefront
{
public:
    explicit Wavefront(int width)
        : m_width(width),
          m_levels(static_cast<std::size_t>(width + lagSum) * lanes),
          m_black(static_cast<std::size_t>(width + lagSum + byteBits)),
          m_fromAbove(static_cast<std::size_t>(width + lagSum))
    {
    }

    // Sets the grey levels of one of the rows.
    void setRow(int lane, const std::vector<std::uint8_t>& levels)
    {
        std::uint8_t* level = &m_levels[static_cast<std::size_t>(lane) * (lag * lanes + 1)];
        for (const std::uint8_t value : levels) {
            *level = value;
            level += lanes;
        }
    }

    // True if the rows above spread nothing into these.
    bool isSettled() const
    {
        return std::all_of(m_fromAbove.begin(), m_fromAbove.end(), [](int e) { return e == 0; });
    }

    // Dithers the rows; those that come next follow below them.
    void run()
    {
        Spread spread;
        for (int step = 0; step < m_width + lagSum; ++step) {
            const auto index = static_cast<std::size_t>(step);
            spread.toBelow[0] = m_fromAbove[index];
            m_black[index] = advance(spread, step, m_width, &m_levels[index * lanes]);
            if (step > lagSum) {
                // Far behind lane 0, which has read this element already.
                m_fromAbove[index - lagSum - 1] = spread.toBelow[lanes];
            }
        }
        // The last column gets nothing from its right.
        m_fromAbove[static_cast<std::size_t>(m_width - 1)] =
            spread.straight[lanes - 1] + spread.belowRightOld[lanes - 1];
    }

    // Packs one of the rows into bits, 1 for black and 0 beyond the width.
    void copyRow(int lane, uchar* row) const
    {
        const std::uint16_t* black = &m_black[static_cast<std::size_t>(lane) * lag];
        for (int x = 0; x < m_width; x += byteBits) {
            unsigned bits = 0;
            for (int i = 0; i < byteBits; ++i) {
                bits = bits << 1 | (unsigned{black[x + i]} >> (lanes - 1 - lane) & 1U);
            }
            row[x / byteBits] = static_cast<uchar>(bits);
        }
    }

private:
    int m_width;
    std::vector<std::uint8_t> m_levels; // by step, then lane
    std::vector<std::uint16_t> m_black; // by step, lane 0 in the most significant bit; 0 at the end
    std::vector<int> m_fromAbove;       // by column, error from the row above the first
};

void setLevels(const QImage& image, const QRect& source, int y, std::uint8_t* levels)
{
    const bool isGrey = image.format() == QImage::Format_Grayscale8;
    const uchar* greys = image.constScanLine(y);
    const auto* colours = reinterpret_cast<const QRgb*>(greys);
    for (int x = source.left(); x <= source.right(); ++x) {
        *levels++ = isGrey ? greys[x] : static_cast<std::uint8_t>(qGray(colours[x]));
    }
}

} // namespace

bool ErrorDiffusion::isSupported(const QImage& image)
{
    return (image.format() == QImage::Format_RGB32 ||
            image.format() == QImage::Format_Grayscale8) &&
           image.devicePixelRatio() == 1.0;
}

QImage ErrorDiffusion::dithered(const QImage& image, const QRect& source, const QSize& size,
                                const QPoint& position)
{
    QImage page = BilevelImage::whitePage(size);
    if (page.isNull()) {
        return page;
    }
    Wavefront wavefront(size.width());
    std::vector<std::uint8_t> levels(static_cast<std::size_t>(size.width()));
    const int end = position.y() + source.height();
    for (int first = position.y(); first < size.height() && (first < end || !wavefront.isSettled());
         first += lanes) {
        for (int lane = 0; lane < lanes; ++lane) {
            std::fill(levels.begin(), levels.end(), std::uint8_t{whiteLevel});
            if (first + lane < end) {
                setLevels(image, source, source.y() + first + lane - position.y(),
                          levels.data() + position.x());
            }
            wavefront.setRow(lane, levels);
        }
        wavefront.run();
        for (int lane = 0; lane < lanes && first + lane < size.height(); ++lane) {
            wavefront.copyRow(lane, page.scanLine(first + lane));
        }
    }
    return page;
}
