// The text of the margins, all the way to the geometry of the page.

#include "Require.h"

#include "app/settings/FaxSizeDetails.h"
#include "options/StringConverter.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <string>

namespace {

bool isFinite(const QMarginsF& margins)
{
    return std::isfinite(margins.left()) && std::isfinite(margins.top()) &&
           std::isfinite(margins.right()) && std::isfinite(margins.bottom());
}

// Sides that count as equal are written once, and that is not transitive: the
// first may equal the second and the second the third, but not the third the
// first.
bool areClose(double one, double other)
{
    constexpr double tolerance = 1e-12;
    return std::abs(one - other) <= 3 * tolerance * std::min(std::abs(one), std::abs(other));
}

bool areClose(const QMarginsF& one, const QMarginsF& other)
{
    return areClose(one.left(), other.left()) && areClose(one.top(), other.top()) &&
           areClose(one.right(), other.right()) && areClose(one.bottom(), other.bottom());
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    using Converter = StringConverter<boost::optional<QMarginsF>>;
    const auto margins = Converter::fromString(std::string(data, data + size));
    if (!margins) {
        return 0;
    }
    const auto again = Converter::fromString(StringConverter<QMarginsF>::toShortString(*margins));
    // A number below the normal range is written, but reads back as an error.
    require(!again || !isFinite(*margins) || areClose(*again, *margins),
            "margins read back from their text");

    for (const FaxPaperSize paper : {FaxPaperSize::A4, FaxPaperSize::Letter, FaxPaperSize::Legal}) {
        for (const FaxResolution resolution : {FaxResolution::Standard, FaxResolution::Ultrafine}) {
            const FaxSizeDetails details = faxSizeDetailsFor(
                {paper, resolution, FaxRotation::Rotate0, {}, *margins, FaxCompression::G3});
            require(!details.pageSize.isEmpty(), "a page has a size whatever the margins");
        }
    }
    return 0;
}
