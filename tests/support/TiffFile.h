#pragma once

#include <QImage>

#include <gtest/gtest.h>

#include <cstdint>
#include <map>
#include <string>
#include <vector>

/// One directory of a TIFF file, read without the program's own code.
struct TiffPage
{
    /// Every tag of the directory by its number, with all its values; rationals
    /// as their quotient. From a walk over the bytes of the file.
    std::map<std::uint16_t, std::vector<double>> tags;

    /// The picture as a reader sees it: QImage::Format_Mono, white at index 0
    /// and black at index 1, whatever the photometric interpretation. Decoded
    /// by libtiff.
    QImage pixels;

    /// The coded data of all strips, as they are in the file.
    std::vector<unsigned char> codedData;
};

/// All directories of the file in order; empty, with a test failure, if the
/// file is not a whole TIFF.
std::vector<TiffPage> readTiff(const std::string& fileName);

/// Compares two bilevel pictures whole; the message names the first row and
/// column that differ. The images are converted to white-at-0 first.
testing::AssertionResult isSamePicture(const QImage& actual, const QImage& expected);
