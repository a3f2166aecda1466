#include "qt/Utf8.h"

#include "support/OtherLocale.h"
#include "support/PrintQt.h"

#include <QIODevice>
#include <QTextStream>

#include <gtest/gtest.h>

namespace {

TEST(Utf8, IsReadInALocaleThatIsNot)
{
    const OtherLocale locale;
    QTextStream stream(QByteArray("\xc3\xa9 \xd0\x9f"), QIODevice::ReadOnly);
    Utf8::useFor(stream);
    EXPECT_EQ(stream.readAll(), QStringLiteral(u"\u00e9 \u041f"));
}

TEST(Utf8, GivesWayToTheByteOrderMarkOfUtf16)
{
    QTextStream stream(QByteArray("\xff\xfe\x1f\x04", 4), QIODevice::ReadOnly);
    Utf8::useFor(stream);
    EXPECT_EQ(stream.readAll(), QStringLiteral(u"\u041f"));
}

} // namespace
