#pragma once

#include "formats/FileFormat.h"

#include <QByteArray>
#include <QString>
#include <QStringList>

/// A file format with access to its row in FileFormatDatabase.
class FileFormatInfo
{
public:
    explicit FileFormatInfo(FileFormat format);

    /// The format with this name; FileFormat::Unknown if there is none.
    explicit FileFormatInfo(const QByteArray& name);

    QByteArray formatName() const;
    QString suffix() const; ///< The preferred suffix.
    QStringList suffixes() const;
    QString mimeType() const;

private:
    FileFormat m_format;
};
