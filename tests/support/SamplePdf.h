#pragma once

#include <QByteArray>

#include <vector>

/// PDF files for tests, made on the spot.
namespace SamplePdf {

inline const QByteArray letter = "0 0 612 792";
inline const QByteArray a4 = "0 0 595.276 841.89";

struct Page
{
    QByteArray mediaBox; ///< Four numbers, which may be in any order; empty to inherit it.
    int rotation = 0;    ///< Degrees clockwise.
    QByteArray contents =
        {}; ///< The content stream, see stream(), or "null"; empty for the drawing.
};

/// A stream object of these bytes. `entries` go into its dictionary.
QByteArray stream(const QByteArray& bytes, const QByteArray& entries = {});

/// A whole PDF file.
///
/// Each page shows thin and thick lines without any symmetry and its own page
/// number as black bars, so no two pages look alike; no font is used. Pages
/// without a media box inherit `inheritedMediaBox`.
QByteArray file(const std::vector<Page>& pages, const QByteArray& inheritedMediaBox = letter);

/// `count` pages of the same size.
QByteArray equalPages(unsigned long count, const QByteArray& mediaBox = letter);

} // namespace SamplePdf
