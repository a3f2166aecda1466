#include "fence/InterpreterLocation.h"

#include "support/SearchPath.h"
#include "support/TemporaryFolder.h"

#include <QFile>
#include <QFileInfo>

#include <gtest/gtest.h>

namespace {

class Interpreter : public testing::Test
{
protected:
    InterpreterLocation
    find(const QStringList& systemFolders = InterpreterLocation::installationFolders()) const
    {
        const SearchPath path(SearchPath::withFirst(m_folder.qPath(QString())));
        return InterpreterLocation(QStringLiteral("gs"), systemFolders);
    }

    QString file() const { return m_folder.qPath(QStringLiteral("gs")); }

    void writeScript() const { write("#!/bin/sh\n"); }

    void write(const QByteArray& content) const
    {
        m_folder.write("gs", content);
        QFile::setPermissions(file(), QFile::ReadOwner | QFile::ExeOwner);
    }

    TemporaryFolder m_folder;
    InterpreterLocation m_installed{QStringLiteral("gs")};
};

TEST_F(Interpreter, OfTheSystemIsKnown)
{
    EXPECT_FALSE(m_installed.isWrapper());
    EXPECT_EQ(m_installed.path(), "/usr/bin/gs");
    EXPECT_NE(m_installed.loader(), "");
    EXPECT_TRUE(QFile::exists(QString::fromStdString(m_installed.loader())));
}

TEST_F(Interpreter, BehindALinkIsThatOfTheSystem)
{
    ASSERT_TRUE(QFile::link(QStringLiteral("/usr/bin/gs"), file()));
    EXPECT_FALSE(find().isWrapper());
    EXPECT_EQ(find().path(), "/usr/bin/gs");
}

TEST_F(Interpreter, ThatIsACopyElsewhereIsAWrapper)
{
    ASSERT_TRUE(QFile::copy(QStringLiteral("/usr/bin/gs"), file()));
    EXPECT_TRUE(find().isWrapper());
    EXPECT_EQ(find().loader(), "");
}

TEST_F(Interpreter, ThatIsAScriptElsewhereIsAWrapper)
{
    writeScript();
    EXPECT_TRUE(find().isWrapper());
}

TEST_F(Interpreter, ThatIsAScriptOfTheSystemIsAWrapper)
{
    writeScript();
    EXPECT_TRUE(find({QFileInfo(m_folder.qPath(QString())).canonicalFilePath()}).isWrapper());
}

TEST_F(Interpreter, ForAnotherKindOfMachineIsAWrapper)
{
    constexpr char class32 = 1;
    write(QByteArray("\x7f"
                     "ELF") +
          class32 + QByteArray(100, '\0'));
    EXPECT_TRUE(find({QFileInfo(m_folder.qPath(QString())).canonicalFilePath()}).isWrapper());
}

TEST_F(Interpreter, InUsrLocalIsAWrapper)
{
    for (const QString& folder : InterpreterLocation::installationFolders()) {
        EXPECT_FALSE(folder.startsWith(QStringLiteral("/usr/local")));
    }
}

TEST_F(Interpreter, IsKnownAnewOnAnotherSearchPath)
{
    EXPECT_EQ(InterpreterLocation::known(QStringLiteral("gs")).path(), "/usr/bin/gs");
    writeScript();
    const SearchPath path(SearchPath::withFirst(m_folder.qPath(QString())));
    EXPECT_TRUE(InterpreterLocation::known(QStringLiteral("gs")).isWrapper());
}

TEST_F(Interpreter, IsKnownByItsName)
{
    EXPECT_EQ(InterpreterLocation::known(QStringLiteral("gs")).path(), "/usr/bin/gs");
    EXPECT_EQ(InterpreterLocation::known(QStringLiteral("true")).path(), "/usr/bin/true");
}

TEST_F(Interpreter, ThatWasMissingIsLookedForAgain)
{
    const SearchPath path(QFile::encodeName(m_folder.qPath(QString())));
    EXPECT_EQ(InterpreterLocation::known(QStringLiteral("gs")).path(), "");
    writeScript();
    EXPECT_TRUE(InterpreterLocation::known(QStringLiteral("gs")).isWrapper());
}

TEST_F(Interpreter, ThatIsMissingIsNeither)
{
    const SearchPath nowhere("/nonexistent");
    const InterpreterLocation missing(QStringLiteral("gs"));
    EXPECT_FALSE(missing.isWrapper());
    EXPECT_EQ(missing.path(), "");
}

} // namespace
