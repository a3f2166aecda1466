#include "formats/FileFormatDatabase.h"

#include <QFileInfo>
#include <QMimeDatabase>
#include <QMimeType>

#include <boost/multi_index/hashed_index.hpp>
#include <boost/multi_index/member.hpp>
#include <boost/multi_index_container.hpp>

#include <algorithm>

namespace {

using FormatInfo = FileFormatDatabase::FormatInfo;

using FormatTable = boost::multi_index_container<
    FormatInfo, boost::multi_index::indexed_by<boost::multi_index::hashed_unique<
                    boost::multi_index::member<FormatInfo, FileFormat, &FormatInfo::format>>>>;

// "htm" is not a suffix of HTML: such a file is recognised by its content.
const FormatTable formatTable = {
    {FileFormat::Pdf, "pdf", QStringLiteral("application/pdf"), {QStringLiteral("pdf")}},
    {FileFormat::Tiff,
     "tiff",
     QStringLiteral("image/tiff"),
     {QStringLiteral("tiff"), QStringLiteral("tif")}},
    {FileFormat::Jpeg,
     "jpeg",
     QStringLiteral("image/jpeg"),
     {QStringLiteral("jpeg"), QStringLiteral("jpg")}},
    {FileFormat::Png, "png", QStringLiteral("image/png"), {QStringLiteral("png")}},
    {FileFormat::Html, "html", QStringLiteral("text/html"), {QStringLiteral("html")}},
};

const FormatInfo& row(FileFormat format)
{
    static const FormatInfo unknown{FileFormat::Unknown, {}, {}, {}};
    const auto found = formatTable.find(format);
    return found == formatTable.end() ? unknown : *found;
}

template <typename Predicate>
FileFormat firstFormat(Predicate matches)
{
    const auto found = std::find_if(formatTable.begin(), formatTable.end(), matches);
    return found == formatTable.end() ? FileFormat::Unknown : found->format;
}

} // namespace

QByteArray FileFormatDatabase::formatName(FileFormat format)
{
    return row(format).name;
}

QString FileFormatDatabase::formatSuffix(FileFormat format)
{
    return formatSuffixes(format).value(0);
}

QStringList FileFormatDatabase::formatSuffixes(FileFormat format)
{
    return row(format).suffixes;
}

QString FileFormatDatabase::formatMimeType(FileFormat format)
{
    return row(format).mimeType;
}

FileFormat FileFormatDatabase::formatFromName(const QByteArray& name)
{
    return firstFormat([&](const FormatInfo& info) { return info.name == name; });
}

FileFormat FileFormatDatabase::formatFromSuffix(const QString& suffix)
{
    return firstFormat(
        [&](const FormatInfo& info) { return info.suffixes.contains(suffix, Qt::CaseSensitive); });
}

FileFormat FileFormatDatabase::formatFromMimeType(const QString& mimeType)
{
    return firstFormat([&](const FormatInfo& info) { return info.mimeType == mimeType; });
}

FileFormat FileFormatDatabase::formatFromMimeType(const QMimeType& mimeType)
{
    if (!mimeType.isValid()) {
        return FileFormat::Unknown;
    }
    return firstFormat([&](const FormatInfo& info) { return mimeType.inherits(info.mimeType); });
}

FileFormat FileFormatDatabase::formatFromContent(QIODevice* device)
{
    return formatFromMimeType(QMimeDatabase().mimeTypeForData(device));
}

FileFormat FileFormatDatabase::formatFromFileName(const QString& fileName)
{
    return formatFromSuffix(QFileInfo(fileName).suffix());
}

FileFormat FileFormatDatabase::formatFromFileNameAndContent(const QString& fileName,
                                                            QIODevice* device)
{
    const FileFormat format = formatFromFileName(fileName);
    return format == FileFormat::Unknown ? formatFromContent(device) : format;
}
