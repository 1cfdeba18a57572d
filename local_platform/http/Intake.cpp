// SPDX-License-Identifier: MIT
#include "http/Intake.h"

#include "base/Refusal.h"
#include "base/Text.h"
#include "http/Multipart.h"
#include "store/Disk.h"

#include <cerrno>
#include <fcntl.h>
#include <unistd.h>
#include <utility>
#include <vector>

namespace local_platform {

namespace {

constexpr std::size_t maxFields = 64;
constexpr std::size_t maxFieldSize = 64u << 10;
constexpr std::size_t maxFormSize = 256u << 10; // without the file

[[noreturn]] void refuseTooLarge(std::uint64_t limit)
{
    throw Refusal("The request is too large; at most " + std::to_string(limit) + " bytes are taken", 413);
}

[[noreturn]] void refuseOtherKind()
{
    throw Refusal("The request was cut short or is malformed");
}

class InMemory : public Intake
{
public:
    void append(const char* data, std::size_t size) override
    {
        size_ += size;
        if (size_ <= maxFieldSize)
            text_.append(data, size);
    }

    std::string text(std::size_t limit) override
    {
        if (limit = std::min(limit, maxFieldSize); size_ > limit)
            refuseTooLarge(limit);
        return text_;
    }

    Upload form() override
    {
        Upload form;
        form.fields = Fields::fromQuery(text(maxFieldSize));
        return form;
    }

    void read(const std::function<void(const char*, std::size_t)>& take) override
    {
        const std::string all = text(maxFieldSize);
        take(all.data(), all.size());
    }

private:
    std::string text_;
    std::uint64_t size_ = 0;
};

class Form : public Intake
{
public:
    Form(const std::string& contentType, const FileStore* files)
        : files_(files)
        , parts_(
              contentType, [this](const Multipart::Part& part) { begin(part); },
              [this](const char* data, std::size_t size) { take(data, size); })
    {
    }

    void append(const char* data, std::size_t size) override { parts_.append(data, size); }
    bool isOnDisk() const override { return files_; }

    Upload form() override
    {
        endField();
        // Nothing of what is refused is left when the client hears of it.
        Upload form = std::move(upload_);
        if (!parts_.isWhole())
            refuseOtherKind();
        if (!refusal_.empty())
            throw Refusal(refusal_);
        return form;
    }

private:
    void begin(const Multipart::Part& part)
    {
        endField();
        inFile_ = files_ && part.name == "file";
        if (inFile_ && upload_.file)
            refusal_ = "An upload holds one file";
        if (!inFile_ && ++fieldCount_ > maxFields)
            refusal_ = "The form has too many fields";
        if (!refusal_.empty())
            return;
        if (inFile_) {
            upload_.fileName = baseName(part.fileName);
            upload_.file =
                std::make_unique<IncomingFile>(files_->incoming(), files_->files(), files_->maxSize());
        } else {
            name_ = part.name;
        }
    }

    void take(const char* data, std::size_t size)
    {
        if (!refusal_.empty())
            return;
        if (inFile_) {
            upload_.file->append(data, size);
        } else if (value_.size() + size > maxFieldSize || formSize_ + size > maxFormSize) {
            refusal_ = "A field of the form is too long";
        } else {
            formSize_ += size;
            value_.append(data, size);
        }
    }

    void endField()
    {
        if (!inFile_ && !name_.empty())
            upload_.fields.add(name_, value_);
        name_.clear();
        value_.clear();
    }

    const FileStore* files_;
    Multipart parts_;
    Upload upload_;
    std::string name_;
    std::string value_;
    std::size_t fieldCount_ = 0;
    std::size_t formSize_ = 0;
    bool inFile_ = false;
    std::string refusal_;
};

/// In a file without a name, which is gone with this object or with the process.
class Spool : public Intake
{
public:
    Spool(const std::filesystem::path& folder, std::uint64_t limit)
        : descriptor_(::open(folder.c_str(), O_TMPFILE | O_RDWR | O_CLOEXEC, 0600))
        , limit_(limit)
        , error_(descriptor_ < 0 ? errno : 0)
    {
    }
    ~Spool() override
    {
        if (descriptor_ >= 0)
            ::close(descriptor_);
    }
    Spool(const Spool&) = delete;
    Spool& operator=(const Spool&) = delete;

    bool isOnDisk() const override { return true; }

    void append(const char* data, std::size_t size) override
    {
        size_ += size;
        while (size > 0 && error_ == 0 && size_ <= limit_) {
            const ssize_t written = ::write(descriptor_, data, size);
            if (written < 0 && errno != EINTR)
                error_ = errno;
            if (written <= 0)
                continue;
            data += written;
            size -= static_cast<std::size_t>(written);
        }
    }

    void read(const std::function<void(const char*, std::size_t)>& take) override
    {
        if (size_ > limit_)
            refuseTooLarge(limit_);
        if (error_ == ENOSPC || error_ == EDQUOT)
            throw Refusal("The platform has no room left", 507);
        if (error_ != 0)
            throwSystemError(error_, "spool");
        std::vector<char> buffer(64u << 10);
        for (std::uint64_t at = 0; at < size_;) {
            const ssize_t got = ::pread(descriptor_, buffer.data(), buffer.size(), static_cast<off_t>(at));
            if (got <= 0)
                throwSystemError(errno, "spool");
            take(buffer.data(), static_cast<std::size_t>(got));
            at += static_cast<std::uint64_t>(got);
        }
    }

private:
    int descriptor_;
    std::uint64_t limit_;
    std::uint64_t size_ = 0;
    int error_;
};

} // namespace

std::string Intake::text(std::size_t)
{
    refuseOtherKind();
}

Upload Intake::form()
{
    refuseOtherKind();
}

void Intake::read(const std::function<void(const char*, std::size_t)>&)
{
    refuseOtherKind();
}

std::unique_ptr<Intake> intakeFor(const BodyUse& use, const std::string& contentType)
{
    if (!use.spool.empty())
        return std::make_unique<Spool>(use.spool, use.spoolLimit);
    if (Multipart::isTypeOf(contentType))
        return std::make_unique<Form>(contentType, use.files);
    return std::make_unique<InMemory>();
}

} // namespace local_platform
