#include "app/settings/FaxConfiguration.h"

#include "support/PrintQt.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <type_traits>

namespace {

static_assert(std::is_trivially_copyable_v<FaxConfiguration>);

static_assert(std::is_same_v<std::underlying_type_t<FaxPaperSize>, std::int32_t>);
static_assert(std::is_same_v<std::underlying_type_t<FaxResolution>, std::int32_t>);
static_assert(std::is_same_v<std::underlying_type_t<FaxCompression>, std::int32_t>);
static_assert(std::is_same_v<std::underlying_type_t<FaxRotation>, std::uint16_t>);
static_assert(std::is_same_v<FaxTransformationFlags, QFlags<FaxTransformationFlag>>);

TEST(FaxConfiguration, TakesItsSixValuesInOrder)
{
    const FaxConfiguration configuration{FaxPaperSize::Legal,    FaxResolution::Superfine,
                                         FaxRotation::Rotate270, FaxTransformationFlag::FitToPaper,
                                         QMarginsF(1, 2, 3, 4),  FaxCompression::G4};
    EXPECT_EQ(configuration.paperSize, FaxPaperSize::Legal);
    EXPECT_EQ(configuration.resolution, FaxResolution::Superfine);
    EXPECT_EQ(configuration.rotation, FaxRotation::Rotate270);
    EXPECT_TRUE(configuration.transformationFlags.testFlag(FaxTransformationFlag::FitToPaper));
    EXPECT_EQ(configuration.margins, QMarginsF(1, 2, 3, 4));
    EXPECT_EQ(configuration.compression, FaxCompression::G4);
}

TEST(FaxCompression, NumbersItsMembersFromZero)
{
    EXPECT_EQ(static_cast<int>(FaxCompression::G3), 0);
    EXPECT_EQ(static_cast<int>(FaxCompression::G4), 1);
}

TEST(FaxRotation, IsTheClockwiseAngleInDegrees)
{
    EXPECT_EQ(static_cast<int>(FaxRotation::Rotate0), 0);
    EXPECT_EQ(static_cast<int>(FaxRotation::Rotate90), 90);
    EXPECT_EQ(static_cast<int>(FaxRotation::Rotate180), 180);
    EXPECT_EQ(static_cast<int>(FaxRotation::Rotate270), 270);
}

TEST(FaxTransformationFlag, FitToPaperIsTheLowestBit)
{
    EXPECT_EQ(static_cast<int>(FaxTransformationFlags(FaxTransformationFlag::FitToPaper)), 1);
}

} // namespace
