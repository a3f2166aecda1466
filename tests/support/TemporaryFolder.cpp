#include "support/TemporaryFolder.h"

#include <QDir>

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <system_error>

TemporaryFolder::TemporaryFolder()
{
    EXPECT_TRUE(m_folder.isValid());
}

TemporaryFolder::~TemporaryFolder()
{
    // Qt leaves behind what has a name that is not UTF-8.
    std::error_code error;
    std::filesystem::remove_all(m_folder.path().toStdString(), error);
}

std::string TemporaryFolder::path(const std::string& fileName) const
{
    return m_folder.path().toStdString() + '/' + fileName;
}

QString TemporaryFolder::qPath(const QString& fileName) const
{
    return m_folder.filePath(fileName);
}

std::string TemporaryFolder::write(const std::string& fileName, const QByteArray& content) const
{
    std::string name = path(fileName);
    std::ofstream file(name, std::ios::binary);
    file.write(content.constData(), content.size());
    EXPECT_TRUE(file.good()) << name;
    return name;
}

QStringList TemporaryFolder::entries() const
{
    return QDir(m_folder.path())
        .entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot,
                   QDir::Name);
}
