#include "bilevel/ErrorDiffusion.h"

#include "bilevel/BilevelImage.h"
#include "bilevel/GreyPicture.h"

#include <QPoint>
#include <QRect>
#include <QSize>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

namespace {

constexpr int pixelsPerByte = 8;

constexpr int whiteLevel = 255;
constexpr int threshold = 128; // below it a pixel is black

// A pixel depends on its left neighbour and on three pixels of the row above,
// so a row can follow the one above at some distance. Sixteen rows run at a time
// as such a wavefront, each a lane: at step t lane k is at column t - 8 * k. The
// lanes do the same work, which compilers turn into vectors, and all of them
// come to the end of a byte of pixels at the same step.
constexpr int lanes = 16;
constexpr int lag = pixelsPerByte;
constexpr int lagSum = lag * (lanes - 1);

// What lanes calculate in, because vectors hold twice as many of it as of int.
// Levels with the errors that come to them are far below its limits.
using Number = std::int16_t;

// The errors of the last steps on their way to other pixels, and the pixels.
struct Spread
{
    Number toRight[lanes] = {};          // to the same row, wanted at the next step
    Number straight[lanes] = {};         // to the pixel below, one step old
    Number belowRight[lanes] = {};       // to the pixel below right, one step old
    Number belowRightOld[lanes] = {};    // the same, two steps old
    Number toBelow[lag][lanes + 1] = {}; // by the step at which element k is wanted by lane k
    std::uint16_t black[lanes] = {};     // the last pixels, 1 for black, the latest in bit 0
};

Number share(int sixteenths, Number error)
{
    return static_cast<Number>(static_cast<Number>(sixteenths * error + 8) >> 4);
}

// One step of all lanes of rows that are `width` pixels wide. A lane that is
// outside of its row spreads nothing.
//
// Not inlined: in the loop over the steps, GCC would unroll the loops over the
// lanes instead of turning them into vectors.
[[gnu::noinline]] void advance(Spread& spread, int step, int width, const std::uint8_t* levels)
{
    const auto begun = static_cast<Number>(std::min(step, lagSum));
    const auto ended = static_cast<Number>(std::clamp(step - width, -1, lagSum));
    const Number* fromAbove = spread.toBelow[step % lag];
    Number* toBelow = spread.toBelow[(step + lag - 1) % lag] + 1;
    Number errors[lanes];
    for (int lane = 0; lane < lanes; ++lane) {
        const auto begin = static_cast<Number>(lag * lane);
        const auto level =
            static_cast<Number>(levels[lane] + spread.toRight[lane] + fromAbove[lane]);
        const bool isInside = begin <= begun && begin > ended;
        const bool isBlack = level < threshold;
        const auto error = static_cast<Number>(isBlack ? level : level - whiteLevel);
        errors[lane] = isInside ? error : Number{0};
        spread.black[lane] = static_cast<std::uint16_t>(spread.black[lane] << 1 |
                                                        static_cast<int>(isBlack && isInside));
    }
    for (int lane = 0; lane < lanes; ++lane) {
        const Number right = share(7, errors[lane]);
        const Number straight = share(5, errors[lane]);
        const Number left = share(3, errors[lane]);
        toBelow[lane] =
            static_cast<Number>(left + spread.straight[lane] + spread.belowRightOld[lane]);
        spread.toRight[lane] = right;
        spread.straight[lane] = straight;
        spread.belowRightOld[lane] = spread.belowRight[lane];
        spread.belowRight[lane] = static_cast<Number>(errors[lane] - right - straight - left);
    }
}

// As many rows of a page as there are lanes.
class Wavefront
{
public:
    explicit Wavefront(int width)
        : m_width(width),
          m_rowBytes((width + pixelsPerByte - 1) / pixelsPerByte),
          m_fromAbove(static_cast<std::size_t>(m_rowBytes + lanes) * pixelsPerByte),
          m_levels(m_fromAbove.size() * lanes)
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
        return std::all_of(m_fromAbove.begin(), m_fromAbove.begin() + m_width,
                           [](Number error) { return error == 0; });
    }

    // Dithers the first `count` rows into the bits of `page` from row `y` on, 1
    // for black. The rows that come next follow below.
    void run(QImage& page, int y, int count)
    {
        uchar* rows = page.scanLine(y);
        Spread spread;
        for (int byte = 0; byte < m_rowBytes + lanes; ++byte) {
            for (int step = byte * pixelsPerByte; step < (byte + 1) * pixelsPerByte; ++step) {
                const auto index = static_cast<std::size_t>(step);
                spread.toBelow[step % lag][0] = m_fromAbove[index];
                advance(spread, step, m_width, &m_levels[index * lanes]);
                if (step > lagSum) {
                    // Far behind lane 0, which has read this element already.
                    m_fromAbove[index - lagSum - 1] = spread.toBelow[(step + lag - 1) % lag][lanes];
                }
            }
            for (int lane = std::max(0, byte - m_rowBytes + 1); lane < std::min(count, byte + 1);
                 ++lane) {
                rows[lane * page.bytesPerLine() + byte - lane] =
                    static_cast<uchar>(spread.black[lane]);
            }
        }
    }

private:
    int m_width;
    int m_rowBytes;
    std::vector<Number> m_fromAbove;    // by column, error from the row above the first
    std::vector<std::uint8_t> m_levels; // by step, then lane
};

} // namespace

bool ErrorDiffusion::isSupported(const QImage& image)
{
    return GreyPicture::isReadable(image) && image.devicePixelRatio() == 1.0;
}

QImage ErrorDiffusion::dithered(const QImage& image, const QRect& source, const QSize& size,
                                const QPoint& position)
{
    if (BilevelImage::isTooLargeToPaint(size)) {
        return QImage();
    }
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
            if (first + lane < end &&
                !GreyPicture::copyRow(image, source, first + lane - position.y(),
                                      levels.data() + position.x())) {
                return QImage();
            }
            wavefront.setRow(lane, levels);
        }
        wavefront.run(page, first, std::min(lanes, size.height() - first));
    }
    return page;
}
