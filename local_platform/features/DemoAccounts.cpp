// SPDX-License-Identifier: MIT
#include "features/DemoAccounts.h"

#include "features/AccountCipher.h"
#include "features/Users.h"
#include "store/Secrets.h"

#include <algorithm>
#include <vector>

namespace local_platform {

namespace {

const std::vector<std::string> demoNames = {"alice", "bob", "carol"};

std::string demoPassword(const std::string& name)
{
    return "demo-" + name + "-1";
}

} // namespace

std::string addDemoAccounts(Database& database, const std::string& cipherKey)
{
    std::string told = "Demo accounts:";
    long long phone = 13800000001;
    for (const std::string& name : demoNames) {
        const std::string password = demoPassword(name);
        const NewAccount account{
            name, clientCipherText(password, cipherKey), std::to_string(phone++), name + "@example.com"};
        auto db = database.work();
        if (!findUser(db, name)) {
            addUser(db, account, hashedPassword(account.password));
            db.commit();
        }
        told.append(" ").append(name).append(" (password ").append(password).append(", phone ");
        told.append(account.phone).append(", mail ").append(account.mail).append(")");
    }
    return told;
}

bool hasDemoAccounts(Database& database, const std::string& cipherKey)
{
    return std::any_of(demoNames.begin(), demoNames.end(), [&](const std::string& name) {
        const auto hash =
            database.read().text("select password_hash from users where username = :name", {name});
        return hash && passwordMatches(*hash, clientCipherText(demoPassword(name), cipherKey));
    });
}

} // namespace local_platform
