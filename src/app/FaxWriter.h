#pragma once

#include "app/settings/FaxConfiguration.h"

#include <string>
#include <vector>

class FaxTiffWriter;

/// One whole conversion: the cover page, then every input file in the order
/// given, into one fax TIFF file.
///
/// The first failure ends it with one line on standard error and no output file
/// left behind. File names are the bytes of the command line.
class FaxWriter
{
public:
    explicit FaxWriter(const FaxConfiguration& configuration);

    /// The HTML file of the cover page; empty for none.
    void setCoverPage(const std::string& fileName);

    void setFiles(const std::vector<std::string>& fileNames);

    /// Has write() put a fence around the whole process once the output is open,
    /// for good: see ParentFence. To be left out where the process goes on to do
    /// something else.
    void fenceProcess() { m_isFenced = true; }

    /// True if the output file was written completely. False without a message
    /// if the name is empty or if there are no input files.
    bool write(const std::string& outputFile) const;

private:
    bool isInput(const std::string& outputFile) const;
    bool writePages(FaxTiffWriter& tiffWriter) const;

    FaxConfiguration m_configuration;
    std::string m_coverPage;
    std::vector<std::string> m_files;
    bool m_isFenced = false;
};
