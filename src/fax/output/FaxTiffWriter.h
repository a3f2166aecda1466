#pragma once

#include "fax/output/FaxFormatWriter.h"

#include <memory>

struct tiff; // libtiff's TIFF; its header stays out of this one

/// Appends bilevel pages to one multi-page TIFF file (ITU-T T.4 or T.6).
///
/// The file is complete only after close() or destruction. Nothing is printed
/// but what libtiff says by itself: every failure is a false result.
class FaxTiffWriter final : public FaxFormatWriter
{
public:
    /// A writer without a file.
    FaxTiffWriter();

    /// Opens `fileName` at once; isOpen() tells whether that worked.
    explicit FaxTiffWriter(const std::string& fileName);

    ~FaxTiffWriter() override;

    bool isOpen() const override;

    /// False for an empty name, or if the file cannot be created.
    bool open(const std::string& fileName) override;

    void close() override;

    /// Appends `image` as the next page.
    ///
    /// `image` is QImage::Format_Mono: rows top to bottom, the most significant
    /// bit leftmost; entry 0 of its colour table decides which bit is white in
    /// the file. `dpi` is in dots per inch. False for any other image, a closed
    /// writer or a libtiff error; a page already begun is not rolled back.
    bool write(const QImage& image, const LogicalDpi& dpi, FaxCompression compression) override;

    /// The descriptor of the open file, which the writer keeps owning; -1 while
    /// no file is open.
    int fileDescriptor() const;

    /// True if the last file was closed and the system took all its data.
    bool isComplete() const { return m_isComplete; }

private:
    struct Cleanup
    {
        void operator()(tiff* handle) const;
    };

    std::unique_ptr<tiff, Cleanup> m_tiff; // null while no file is open
    bool m_isComplete = false;
};
