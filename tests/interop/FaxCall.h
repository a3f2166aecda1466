#pragma once

#include "app/settings/FaxCompression.h"

#include <string>

/// A whole fax call (ITU-T T.30) between two machines in this process, over
/// T.38: their packets are handed across in memory, and time is only counted.
namespace FaxCall {

/// Which result codes the two ends closed the call with, and what was received.
struct Result
{
    std::string sender = "did not finish";   ///< "OK" if all went well.
    std::string receiver = "did not finish"; ///< The same.
    int pageCount = 0;                       ///< Pages that the receiver confirmed.
};

/// Sends the pages of the TIFF file `sentFile` in the coding of `compression`.
///
/// Group 3 goes without, group 4 with error correction. The receiver stores
/// what arrives in `receivedFile`, coded by itself.
Result run(const std::string& sentFile, const std::string& receivedFile,
           FaxCompression compression);

} // namespace FaxCall
