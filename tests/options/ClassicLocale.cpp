#include <gtest/gtest.h>

#include <clocale>

namespace {

// The program reads its options before the application object exists, and that
// is what brings in the numbers of the user's locale. Here the object comes
// first.
class ClassicLocale : public testing::Environment
{
public:
    void SetUp() override { ASSERT_NE(std::setlocale(LC_ALL, "C"), nullptr); }
};

[[maybe_unused]] testing::Environment* const classicLocale =
    testing::AddGlobalTestEnvironment(new ClassicLocale);

} // namespace
