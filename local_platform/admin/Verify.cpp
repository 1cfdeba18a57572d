// SPDX-License-Identifier: MIT
#include "admin/Verify.h"

#include "base/Text.h"
#include "store/DataFolder.h"
#include "store/FileStore.h"
#include "store/Inventory.h"
#include "store/Schema.h"

#include <fcntl.h>
#include <iostream>
#include <set>
#include <stdexcept>
#include <system_error>

namespace local_platform {

namespace fs = std::filesystem;

namespace {

class Verification
{
public:
    explicit Verification(const DataFolder& folder)
        : folder_(folder)
        , served_(isServed(folder.path()))
        , database_(folder.database(), Database::Access::ReadOnly)
        , files_(folder.path(), 0)
    {
    }

    Outcome run()
    {
        checkFilesInUse();
        checkTrash();
        for (const std::string& name : folder_.strangers())
            tell("surplus", name, "");
        std::cout << checked_ << " files checked, " << found_ << " findings" << std::endl;
        return found_ == 0 ? AllGood : Findings;
    }

private:
    void checkFilesInUse()
    {
        std::set<std::string> known;
        for (const KnownFile& file : now<KnownFile>(knownFiles)) {
            known.insert(file.storedName);
            const std::string told = file.role + ", \"" + oneLine(file.fileName) + '"';
            const auto open = [&] { return files_.open(file.storedName); };
            // One that is gone may have been replaced since.
            check("files/" + file.storedName, told, open, file.size, file.sha256,
                [&] { return !isKnownNow(file.storedName); });
        }
        const auto isSurplus = [&](const std::string& name) {
            return known.count(name) == 0 && !isKnownNow(name) && !isTrashedNow(name);
        };
        tellSurplus("files", isSurplus);
        // What comes in just now is nobody's yet.
        tellSurplus("incoming", [&](const std::string& name) {
            return isSurplus(name) && !(served_ && FileStore::isStoredName(name));
        });
        tellSurplus(
            "scratch", [&](const std::string& name) { return !(served_ && FileStore::isStoredName(name)); });
    }

    void checkTrash()
    {
        std::set<std::string> known;
        for (const TrashedFile& file : now<TrashedFile>(trashedFiles)) {
            known.insert(file.nameInTrash());
            const auto open = [&] {
                const fs::path path = folder_.trash() / file.nameInTrash();
                const int descriptor = ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW);
                return descriptor >= 0 ? OpenFile(descriptor) : files_.open(file.storedName);
            };
            check("trash/" + file.nameInTrash(), "replaced, \"" + oneLine(file.fileName) + '"', open,
                file.size, file.sha256, [&] { return !isTrashedNow(file.storedName); });
        }
        tellSurplus("trash", [&](const std::string& name) {
            const std::string storedName = name.substr(std::min(name.size(), name.find('-') + 1));
            return known.count(name) == 0 && !isTrashedNow(storedName);
        });
    }

    template <typename Open, typename Excused>
    void check(const std::string& path, const std::string& told, const Open& open, long long size,
        const std::optional<std::string>& sha256, const Excused& excused)
    {
        ++checked_;
        try {
            const OpenFile file = open();
            if (static_cast<long long>(file.size()) != size)
                tell("changed", path, told);
            else if (!sha256)
                tell("without a digest", path, told);
            else if (!sha256->empty() && digestOf(file) != *sha256)
                tell("changed", path, told);
        } catch (const std::system_error& error) {
            if (error.code() != std::errc::no_such_file_or_directory)
                tell("unreadable", path, told + ": " + error.what());
            else if (!excused())
                tell("missing", path, told);
        } catch (const std::exception& error) {
            tell("unreadable", path, told + ": " + error.what());
        }
    }

    template <typename IsSurplus>
    void tellSurplus(const std::string& name, const IsSurplus& isSurplus)
    {
        for (const auto& entry : fs::directory_iterator(folder_.path() / name))
            if (const std::string file = entry.path().filename().string(); isSurplus(file))
                tell("surplus", name + '/' + file, "");
    }

    void tell(const std::string& what, const std::string& path, const std::string& told)
    {
        ++found_;
        std::cout << what << ": " << oneLine(path) << (told.empty() ? "" : "  (" + told + ')') << '\n';
    }

    template <typename Record>
    std::vector<Record> now(std::vector<Record> (*list)(Database::Work&))
    {
        auto db = database_.read();
        return list(db);
    }

    bool isKnownNow(const std::string& storedName)
    {
        auto db = database_.read();
        return isKnown(db, storedName);
    }

    bool isTrashedNow(const std::string& storedName)
    {
        return database_.read()
            .number("select 1 from trash where stored_name = :name", {storedName})
            .has_value();
    }

    const DataFolder& folder_;
    bool served_;
    Database database_;
    FileStore files_;
    long long checked_ = 0;
    long long found_ = 0;
};

} // namespace

Outcome verify(const fs::path& data)
{
    const DataFolder folder(data, DataFolder::Use::Inspect);
    const std::string damage = damageOf(folder.database(), Reading::Beside, true);
    if (!damage.empty())
        throw std::runtime_error("The database is damaged: " + damage);
    return Verification(folder).run();
}

} // namespace local_platform
