// SPDX-License-Identifier: MIT
#include "features/Tokens.h"

#include "store/Secrets.h"

#include <nlohmann/json.hpp>

namespace local_platform {

namespace {

constexpr long long refreshLifetime = 2592000; // 30 days

struct UserInfo
{
    long long id;
    std::string username;
    std::string phone;
    std::string mail;

    static UserInfo from(Database::Row& row) { return {row.number(), row.text(), row.text(), row.text()}; }
};

struct Lifetime
{
    long long user;
    long long expiresAt;

    static Lifetime from(Database::Row& row) { return {row.number(), row.number()}; }
};

Json userInfo(Database::Work& db, long long user)
{
    const auto info =
        db.one<UserInfo>("select id, username, phone, mail from users where id = :id", {user}).value();
    return {{"id", info.id}, {"username", info.username}, {"phone", info.phone}, {"mail", info.mail}};
}

Json invalidToken(const std::string& description)
{
    Json reply = failure(1, description);
    reply["error"] = "invalid_token";
    reply["error_description"] = description;
    return reply;
}

} // namespace

Tokens::Tokens(Database& database, const Clock& clock, long long lifetime)
    : database_(database)
    , clock_(clock)
    , lifetime_(lifetime)
{
}

Json Tokens::issue(Database::Work& db, long long user) const
{
    if (db.number("select id from users where id = :user and disabled <> 0", {user}))
        throw Refusal("This account is disabled", 403);
    const std::string access = randomToken();
    const std::string refresh = randomToken();
    const long long now = clock_.now();
    db.run("delete from tokens where user_id = :user and refresh_expires_at <= :now", {user, now});
    db.run("insert into tokens (access, refresh, user_id, expires_at, refresh_expires_at)"
           " values (:access, :refresh, :user, :expires, :refresh_expires)",
        {fingerprint(access), fingerprint(refresh), user, now + lifetime_,
            now + lifetime_ + refreshLifetime});
    return {{"code", 0}, {"msg", "success"}, {"access_token", access}, {"refresh_token", refresh},
        {"token_type", "bearer"}, {"expires_in", lifetime_}, {"scope", "server"},
        {"user_info", userInfo(db, user)}};
}

Json Tokens::refresh(const std::string& refreshToken)
{
    auto db = database_.work();
    const auto user =
        db.number("select user_id from tokens where refresh = :refresh and refresh_expires_at > :now",
            {fingerprint(refreshToken), clock_.now()});
    if (!user)
        throw Refusal("The refresh token is unknown or has expired", 401);
    db.run("delete from tokens where refresh = :refresh", {fingerprint(refreshToken)});
    Json reply = issue(db, *user);
    db.commit();
    return reply;
}

long long Tokens::userOf(const std::string& token)
{
    const auto user =
        database_.read().number("select user_id from tokens where access = :access and expires_at > :now",
            {fingerprint(token), clock_.now()});
    if (!user)
        throw tokenRefused();
    return *user;
}

Json Tokens::check(const std::string& accessToken)
{
    auto db = database_.read();
    const auto token = db.one<Lifetime>(
        "select user_id, expires_at from tokens where access = :access", {fingerprint(accessToken)});
    if (!token)
        return invalidToken("Token was not recognised");
    if (token->expiresAt <= clock_.now())
        return invalidToken("Token has expired");
    return {
        {"code", 0}, {"active", true}, {"exp", token->expiresAt}, {"user_info", userInfo(db, token->user)}};
}

void Tokens::end(const std::string& token)
{
    userOf(token);
    auto db = database_.work();
    db.run("delete from tokens where access = :access", {fingerprint(token)});
    db.commit();
}

void Tokens::endAllOf(Database::Work& db, long long user) const
{
    db.run("delete from tokens where user_id = :user", {user});
}

} // namespace local_platform
