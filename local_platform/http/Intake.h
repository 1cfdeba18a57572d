// SPDX-License-Identifier: MIT
#pragma once

#include "http/Fields.h"
#include "store/FileStore.h"

#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>

namespace local_platform {

/// A form with one file, as it came in.
struct Upload
{
    Fields fields;
    std::string fileName;
    std::unique_ptr<IncomingFile> file; ///< null until a file part begins
};

/// How an endpoint wants the body of its requests.
struct BodyUse
{
    const FileStore* files = nullptr; ///< takes the file of a form
    std::filesystem::path spool; ///< takes a large body as it is
    std::uint64_t spoolLimit = 0;
};

/// Takes a body while it comes in. Nothing is refused before its end: many clients look for an answer only
/// after they have sent it all.
class Intake
{
public:
    virtual ~Intake() = default;

    virtual void append(const char* data, std::size_t size) = 0;
    /// Whether append() may have to wait for a disk.
    virtual bool isOnDisk() const { return false; }

    // What was taken in. Each refuses what was cut short, is too long or of another kind.
    virtual std::string text(std::size_t limit);
    virtual Upload form();
    virtual void read(const std::function<void(const char*, std::size_t)>& take);
};

/// The right one for a body of this type.
std::unique_ptr<Intake> intakeFor(const BodyUse& use, const std::string& contentType);

} // namespace local_platform
