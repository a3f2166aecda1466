#include "support/SamplePdf.h"

#include <QList>

namespace {

// The drawing fills the unit square, which is laid over the media box.
QByteArray contentStream(unsigned long pageNumber, const QByteArray& mediaBox)
{
    const QList<QByteArray> corners = mediaBox.split(' ');
    const double left = corners.value(0).toDouble();
    const double bottom = corners.value(1).toDouble();
    QByteArray stream = QByteArray::number(corners.value(2).toDouble() - left) + " 0 0 " +
                        QByteArray::number(corners.value(3).toDouble() - bottom) + ' ' +
                        corners.value(0) + ' ' + corners.value(1) + " cm\n" +
                        "0.05 0.05 0.1 0.8 re 0.15 0.05 0.6 0.04 re f\n"
                        "0.002 w 0.2 0.2 m 0.93 0.71 l 0.31 0.97 l S\n";
    constexpr int bitCount = 8;
    for (int bit = 0; bit < bitCount; ++bit) {
        if ((pageNumber >> bit & 1U) != 0) {
            stream += "0.3 " + QByteArray::number(0.3 + bit * 0.06) + " 0.3 0.03 re f\n";
        }
    }
    return stream;
}

QByteArray pageObject(const SamplePdf::Page& page, int contentsNumber)
{
    QByteArray object = "<</Type/Page/Parent 2 0 R";
    if (!page.mediaBox.isEmpty()) {
        object += "/MediaBox[" + page.mediaBox + ']';
    }
    if (page.rotation != 0) {
        object += "/Rotate " + QByteArray::number(page.rotation);
    }
    const bool isNull = page.contents == "null";
    return object + "/Contents " +
           (isNull ? page.contents : QByteArray::number(contentsNumber) + " 0 R") + ">>";
}

std::vector<QByteArray> objects(const std::vector<SamplePdf::Page>& pages,
                                const QByteArray& inheritedMediaBox)
{
    constexpr int firstPageObject = 3;
    constexpr int objectsPerPage = 2;
    QByteArray kids;
    std::vector<QByteArray> all(firstPageObject - 1);
    unsigned long pageNumber = 0;
    for (const SamplePdf::Page& page : pages) {
        const int number = firstPageObject + objectsPerPage * static_cast<int>(pageNumber++);
        const QByteArray drawing =
            contentStream(pageNumber, page.mediaBox.isEmpty() ? inheritedMediaBox : page.mediaBox);
        kids += QByteArray::number(number) + " 0 R ";
        all.push_back(pageObject(page, number + 1));
        all.push_back(page.contents.isEmpty() ? SamplePdf::stream(drawing) : page.contents);
    }
    all[0] = "<</Type/Catalog/Pages 2 0 R>>";
    all[1] = "<</Type/Pages/Count " + QByteArray::number(static_cast<qulonglong>(pages.size())) +
             "/MediaBox[" + inheritedMediaBox + "]/Kids[" + kids + "]>>";
    return all;
}

} // namespace

QByteArray SamplePdf::stream(const QByteArray& bytes, const QByteArray& entries)
{
    return "<</Length " + QByteArray::number(bytes.size()) + entries + ">>\nstream\n" + bytes +
           "endstream";
}

QByteArray SamplePdf::file(const std::vector<Page>& pages, const QByteArray& inheritedMediaBox)
{
    constexpr int offsetDigits = 10;
    QByteArray pdf = "%PDF-1.4\n";
    QByteArray table = "0000000000 65535 f \n";
    int number = 0;
    for (const QByteArray& object : objects(pages, inheritedMediaBox)) {
        table += QByteArray::number(pdf.size()).rightJustified(offsetDigits, '0') + " 00000 n \n";
        pdf += QByteArray::number(++number) + " 0 obj\n" + object + "\nendobj\n";
    }
    const QByteArray tableStart = QByteArray::number(pdf.size());
    const QByteArray entryCount = QByteArray::number(number + 1);
    return pdf + "xref\n0 " + entryCount + '\n' + table + "trailer\n<</Size " + entryCount +
           "/Root 1 0 R>>\nstartxref\n" + tableStart + "\n%%EOF\n";
}

QByteArray SamplePdf::equalPages(unsigned long count, const QByteArray& mediaBox)
{
    return file(std::vector<Page>(count, Page{mediaBox}));
}
