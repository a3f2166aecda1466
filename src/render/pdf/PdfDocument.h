#pragma once

#include <QSizeF>
#include <QString>

#include <memory>
#include <vector>

class PdfPageRenderer;
class QImage;
struct RenderSize;

/// A PDF file by its name, with the sizes of its pages.
class PdfDocument
{
public:
    PdfDocument();
    ~PdfDocument();
    PdfDocument(const PdfDocument&) = delete;
    PdfDocument& operator=(const PdfDocument&) = delete;

    const QString& fileName() const { return m_fileName; }

    /// Reads the page sizes of another file. Pages already rendered ahead stay
    /// where they are: make a new document for every file.
    void setFileName(const QString& fileName);

    /// One entry per page, in points; none if the file cannot be read.
    const std::vector<QSizeF>& pageSizes() const { return m_pageSizes; }

    PdfPageRenderer& pageRenderer() { return *m_pageRenderer; }

    /// See PdfPageRenderer::renderPage().
    bool renderPage(unsigned long index, const RenderSize& renderSize, QImage& image) const;

private:
    QString m_fileName;
    std::vector<QSizeF> m_pageSizes;
    std::unique_ptr<PdfPageRenderer> m_pageRenderer;
};
