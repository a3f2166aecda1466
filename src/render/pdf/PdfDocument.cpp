#include "render/pdf/PdfDocument.h"

#include "render/pdf/GhostScriptCommand.h"
#include "render/pdf/PdfPageRenderer.h"

PdfDocument::PdfDocument() : m_pageRenderer(std::make_unique<PdfPageRenderer>(this)) {}

PdfDocument::~PdfDocument() = default;

void PdfDocument::setFileName(const QString& fileName)
{
    if (fileName == m_fileName) {
        return;
    }
    m_pageRenderer->forgetReadAhead();
    m_fileName = fileName;
    m_pageSizes = GhostScriptCommand(fileName).getPageSizes();
}

bool PdfDocument::renderPage(unsigned long index, const RenderSize& renderSize, QImage& image) const
{
    return m_pageRenderer->renderPage(index, renderSize, image);
}
