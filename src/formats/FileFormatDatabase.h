#pragma once

#include "formats/FileFormat.h"

#include <QByteArray>
#include <QString>
#include <QStringList>

class QIODevice;
class QMimeType;

/// The fixed table of input formats: name, MIME type and file name suffixes.
///
/// Every comparison is case-sensitive. What is not found is FileFormat::Unknown,
/// a null string or an empty list. The table is filled before main() and only
/// read afterwards, so that any thread may use it.
class FileFormatDatabase
{
public:
    /// One row of the table.
    struct FormatInfo
    {
        FileFormat format;
        QByteArray name;      ///< Short name, as the image plug-ins know it.
        QString mimeType;     ///< For example "image/tiff".
        QStringList suffixes; ///< Without the dot, the preferred one first.
    };

    static QByteArray formatName(FileFormat format);
    static QString formatSuffix(FileFormat format); ///< The preferred suffix.
    static QStringList formatSuffixes(FileFormat format);
    static QString formatMimeType(FileFormat format);

    static FileFormat formatFromName(const QByteArray& name);
    static FileFormat formatFromSuffix(const QString& suffix);
    static FileFormat formatFromMimeType(const QString& mimeType);

    /// The format whose MIME type is `mimeType` or one of its ancestors.
    static FileFormat formatFromMimeType(const QMimeType& mimeType);

    /// Looks at the start of the data without consuming it.
    static FileFormat formatFromContent(QIODevice* device);

    /// Goes by what follows the last dot of the name.
    static FileFormat formatFromFileName(const QString& fileName);

    /// The content is looked at only if the name does not tell.
    static FileFormat formatFromFileNameAndContent(const QString& fileName, QIODevice* device);
};
