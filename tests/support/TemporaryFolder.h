#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>

#include <string>

/// A folder that is removed with everything in it at the end of the test.
class TemporaryFolder
{
public:
    TemporaryFolder();
    ~TemporaryFolder();

    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    /// The absolute path of a file in the folder, whether it exists or not.
    std::string path(const std::string& fileName) const;
    QString qPath(const QString& fileName) const;

    /// Creates a file and returns its path.
    std::string write(const std::string& fileName, const QByteArray& content) const;

    /// The names of everything in the folder, hidden files included, sorted.
    QStringList entries() const;

private:
    QTemporaryDir m_folder;
};
