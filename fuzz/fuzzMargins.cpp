// The text of the margins, all the way to the geometry of the page.

#include "Require.h"

#include "app/settings/FaxSizeDetails.h"
#include "options/StringConverter.h"

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

bool areClose(const QMarginsF& one, const QMarginsF& other)
{
    return qFuzzyCompare(one.left(), other.left()) && qFuzzyCompare(one.top(), other.top()) &&
           qFuzzyCompare(one.right(), other.right()) && qFuzzyCompare(one.bottom(), other.bottom());
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
