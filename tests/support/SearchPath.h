#pragma once

#include <QByteArray>
#include <QString>

/// Replaces the folders in which programs are looked up for as long as it lives.
class SearchPath
{
public:
    /// `folders` as in the environment variable PATH.
    explicit SearchPath(const QByteArray& folders);
    ~SearchPath();

    SearchPath(const SearchPath&) = delete;
    SearchPath& operator=(const SearchPath&) = delete;

    /// `folder` in front of the folders in force now.
    static QByteArray withFirst(const QString& folder);

private:
    QByteArray m_original;
};
