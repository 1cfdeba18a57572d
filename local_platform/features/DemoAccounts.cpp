// SPDX-License-Identifier: MIT
#include "features/DemoAccounts.h"

#include "features/AccountCipher.h"
#include "features/Users.h"
#include "store/Secrets.h"

namespace local_platform {

std::string addDemoAccounts(Database& database, const std::string& cipherKey)
{
    std::string told = "Demo accounts:";
    long long phone = 13800000001;
    for (const std::string name : {"alice", "bob", "carol"}) {
        const std::string password = "demo-" + name + "-1";
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

} // namespace local_platform
