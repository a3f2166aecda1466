#pragma once

#include "fence/LandlockRuleset.h"
#include "fence/PrivateFolder.h"

#include <memory>
#include <string>

class InterpreterLocation;

/// The fence around this program itself while it reads strangers' documents:
/// it may go on reading files, but not start programs other than one
/// interpreter, change files, or speak with anybody. It may remove files in the
/// output's folder, as it has to do with the output when it fails.
///
/// What is open already stays usable. What the kernel, or whoever confines this
/// program, does not grant is left out in silence. Where the interpreter is a
/// wrapper (see InterpreterLocation), which would be behind the same fence,
/// there are no rules for files, programs and sockets.
class ParentFence
{
public:
    /// Enters the fence, for the rest of the life of the calling thread.
    /// `outputFile` has been opened. `newestAbi` as for LandlockRuleset.
    ParentFence(const InterpreterLocation& interpreter, const std::string& outputFile,
                int newestAbi = LandlockInterface::latestAbi);

    /// The folder for the temporary files of all children is removed, unless
    /// one of them still runs. All else stays in force.
    ~ParentFence() = default;

    ParentFence(const ParentFence&) = delete;
    ParentFence& operator=(const ParentFence&) = delete;

private:
    LandlockRuleset rulesFor(const InterpreterLocation& interpreter, const std::string& outputFile,
                             int newestAbi) const;

    // Made before there are rules for it, and kept for the children. Null for a
    // wrapper.
    std::shared_ptr<PrivateFolder> m_temporaryFolder;
};
