#pragma once

#include "app/settings/FaxCompression.h"
#include "app/settings/LogicalDpi.h"
#include "fax/output/FaxFormatWriter.h"

#include <QImage>

#include <limits>
#include <vector>

/// Keeps the pages that it is given instead of writing them to a file.
class RecordingWriter final : public FaxFormatWriter
{
public:
    struct Page
    {
        QImage image;
        LogicalDpi dpi;
        FaxCompression compression;
    };

    RecordingWriter() = default;

    /// Takes `pageLimit` pages and fails from then on.
    explicit RecordingWriter(std::size_t pageLimit) : m_pageLimit(pageLimit) {}

    const std::vector<Page>& pages() const { return m_pages; }

    bool isOpen() const override { return true; }
    bool open(const std::string& /*fileName*/) override { return true; }
    void close() override {}

    bool write(const QImage& image, const LogicalDpi& dpi, FaxCompression compression) override
    {
        if (m_pages.size() == m_pageLimit) {
            return false;
        }
        m_pages.push_back({image, dpi, compression});
        return true;
    }

private:
    std::vector<Page> m_pages;
    std::size_t m_pageLimit = std::numeric_limits<std::size_t>::max();
};
