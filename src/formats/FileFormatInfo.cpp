#include "formats/FileFormatInfo.h"

#include "formats/FileFormatDatabase.h"

FileFormatInfo::FileFormatInfo(FileFormat format) : m_format(format) {}

FileFormatInfo::FileFormatInfo(const QByteArray& name)
    : m_format(FileFormatDatabase::formatFromName(name))
{
}

QByteArray FileFormatInfo::formatName() const
{
    return FileFormatDatabase::formatName(m_format);
}

QString FileFormatInfo::suffix() const
{
    return FileFormatDatabase::formatSuffix(m_format);
}

QStringList FileFormatInfo::suffixes() const
{
    return FileFormatDatabase::formatSuffixes(m_format);
}

QString FileFormatInfo::mimeType() const
{
    return FileFormatDatabase::formatMimeType(m_format);
}
