// SPDX-License-Identifier: MIT
#include "features/Accounts.h"

#include "base/Names.h"
#include "store/Secrets.h"

#include <nlohmann/json.hpp>

namespace local_platform {

Accounts::Accounts(
    Database& database, Tokens& tokens, Codes& codes, const Clock& clock, const Options& options)
    : database_(database)
    , tokens_(tokens)
    , codes_(codes)
    , options_(options)
    , guessing_(clock)
{
}

void Accounts::addTo(Routes& routes)
{
    const auto authorized = [](const std::string& authorization, const std::string& what, Endpoint endpoint) {
        return [=](Call& call) {
            if (!sameSecret(call.header("Authorization"), authorization))
                throw Refusal("The " + what + " is wrong", 401);
            return endpoint(call);
        };
    };
    const auto byClient = [&](Endpoint endpoint) {
        return authorized(options_.clientCredential, "client credential", std::move(endpoint));
    };
    const Endpoint byPassword = byClient([this](Call& call) { return signIn(call); });
    const Endpoint byRefresh = authorized(
        options_.refreshBearer, "refresh credential", [this](Call& call) { return refresh(call); });

    const auto hashing = [&](const std::string& path, Endpoint endpoint) {
        routes.add("POST", path, {std::move(endpoint), {}, Lane::SignIn});
    };
    hashing("/auth/oauth/token", [=](Call& call) {
        const std::string& grant = call.query().text("grant_type");
        if (grant == "password")
            return byPassword(call);
        if (grant == "refresh_token")
            return byRefresh(call);
        throw Refusal("The grant type " + grant + " is not supported");
    });
    routes.add("POST", "/auth/mobile/token/sms", byClient([this](Call& call) { return signInByCode(call); }));
    routes.add("POST", "/auth/oauth/check_token",
        byClient([this](Call& call) { return tokens_.check(call.form().text("token")); }));
    routes.add("DELETE", "/auth/token/logout", [this](Call& call) {
        tokens_.end(call.bearer());
        return success(true);
    });
    hashing("/admin/api/user", byClient([this](Call& call) {
        const Fields form = call.form();
        const std::string& phone = form.filledText("phone");
        const std::string& name = form.filledText("username");
        requireUsableName(name, phone);
        return registerAccount(
            {name, form.filledText("password"), phone, ""}, phone, form.text("smscode"), call.client());
    }));
    hashing("/admin/api/user/mail/register", byClient([this](Call& call) {
        const Fields form = call.form();
        const std::string& mail = form.filledText("mail");
        requireUsableMail(mail);
        return registerAccount(
            {mail, form.filledText("password"), "", mail}, mail, form.text("mailCode"), call.client());
    }));
    hashing("/admin/api/user/resetpw", byClient([this](Call& call) { return resetPassword(call); }));
}

Json Accounts::signIn(Call& call)
{
    const Fields form = call.form();
    std::optional<long long> user;
    std::string hash;
    {
        auto db = database_.read();
        user = findUser(db, form.text("username"));
        if (user)
            hash = db.text("select password_hash from users where id = :id", {*user}).value_or("");
    }
    const std::string account = user ? "user " + std::to_string(*user) : comparable(form.text("username"));
    guessing_.requireMay(account, call.client());
    // Outside any work: the check takes its time.
    const std::string& password = form.text("password");
    if (!(user && recent_.knows(*user, hash, password)) && !passwordMatches(hash, password)) {
        guessing_.wrong(account, call.client());
        throw Refusal("The user name or the password is wrong");
    }
    guessing_.right(account, call.client());
    recent_.remember(*user, hash, password);
    const std::string renewed = isHashedAsOfOld(hash) ? hashedPassword(password) : hash;
    auto db = database_.work();
    if (renewed != hash)
        db.run("update users set password_hash = :new where id = :id and password_hash = :old",
            {renewed, *user, hash});
    Json reply = tokens_.issue(db, *user);
    db.commit();
    return reply;
}

Json Accounts::signInByCode(Call& call)
{
    const Fields& query = call.query();
    const std::string& account = query.text("mobile");
    const std::size_t at = account.find('@');
    const std::string way = account.substr(0, at);
    if (query.text("grant_type") != "mobile" || at == std::string::npos || (way != "SMS" && way != "MAIL"))
        throw Refusal("The sign-in by code is malformed");
    const std::string address = account.substr(at + 1);

    auto db = database_.work();
    codes_.redeem(db, address, Codes::Purpose::SignIn, query.text("code"), call.client());
    const auto user = db.number(std::string("select id from users where ") + (way == "SMS" ? "phone" : "mail")
            + " = :address and " + (way == "SMS" ? "phone" : "mail") + " <> ''",
        {address});
    if (!user)
        throw Refusal("No account has this phone number or e-mail address", 404);
    Json reply = tokens_.issue(db, *user);
    // Clients keep this field without reading it; there is no password to give.
    reply["user_info"]["password"] = "******";
    db.commit();
    return reply;
}

Json Accounts::refresh(Call& call)
{
    return tokens_.refresh(call.form().text("refresh_token"));
}

Json Accounts::registerAccount(
    const NewAccount& account, const std::string& address, const std::string& code, const std::string& client)
{
    const std::string hash = hashedPassword(account.password);
    auto db = database_.work();
    codes_.redeem(db, address, Codes::Purpose::SignIn, code, client);
    addUser(db, account, hash);
    db.commit();
    return success(true);
}

Json Accounts::resetPassword(Call& call)
{
    const Fields form = call.form();
    const std::string& address = form.filledText("phone");
    const std::string hash = hashedPassword(form.filledText("password"));
    auto db = database_.work();
    codes_.redeem(db, address, Codes::Purpose::Reset, form.text("smscode"), call.client());
    const auto user = findUser(db, address);
    if (!user)
        throw Refusal("No account has this phone number or e-mail address", 404);
    db.run("update users set password_hash = :hash where id = :id", {hash, *user});
    // Whoever knew the old password is signed out.
    tokens_.endAllOf(db, *user);
    db.commit();
    return success(true);
}

} // namespace local_platform
