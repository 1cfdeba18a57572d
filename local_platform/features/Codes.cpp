// SPDX-License-Identifier: MIT
#include "features/Codes.h"

#include "base/Text.h"
#include "features/Users.h"
#include "store/Secrets.h"

#include <nlohmann/json.hpp>

namespace local_platform {

namespace {

constexpr int codeLength = 6;
constexpr long long tries = 5;
// New codes bring new tries, so they are counted as well.
constexpr long long maxSentInWindow = 20;
constexpr long long window = 3600;

struct SentCodes
{
    long long windowStart;
    long long inWindow;

    static SentCodes from(Database::Row& row) { return {row.number(), row.number()}; }
};

struct ValidCode
{
    std::string code;
    long long triesLeft;

    static ValidCode from(Database::Row& row) { return {row.text(), row.number()}; }
};

std::string stored(Codes::Purpose purpose)
{
    return purpose == Codes::Purpose::Reset ? "reset" : "sign-in";
}

std::string told(Codes::Purpose purpose)
{
    return purpose == Codes::Purpose::Reset ? "password reset" : "sign-in or registration";
}

} // namespace

Codes::Codes(Database& database, const Clock& clock, Outbox& outbox, long long lifetime)
    : database_(database)
    , clock_(clock)
    , outbox_(outbox)
    , lifetime_(lifetime)
{
}

void Codes::addTo(Routes& routes)
{
    const auto sender = [this](const std::string& way, Purpose purpose) {
        return [=](Call& call) { return send(way, call.rest(), purpose); };
    };
    routes.add("GET", "/admin/mobile/*", sender("sms", Purpose::SignIn));
    routes.add("GET", "/admin/mobile/reset/*", sender("sms", Purpose::Reset));
    routes.add("GET", "/admin/mail/*", sender("mail", Purpose::SignIn));
    routes.add("GET", "/admin/mail/reset/*", sender("mail", Purpose::Reset));
}

Json Codes::send(const std::string& way, const std::string& address, Purpose purpose)
{
    if (way == "sms" && !isPhone(address))
        throw Refusal("This is not a phone number");
    if (way == "mail" && !isMail(address))
        throw Refusal("This is not an e-mail address");

    const std::string code = randomDigits(codeLength);
    const long long now = clock_.now();
    auto db = database_.work();
    const auto last =
        db.one<SentCodes>("select window_start, sent_in_window from codes where address = :address"
                          " and purpose = :purpose",
            {address, stored(purpose)});
    const bool sameWindow = last && last->windowStart + window > now;
    const long long sent = sameWindow ? last->inWindow : 0;
    if (sent >= maxSentInWindow)
        throw Refusal("Too many codes were asked for; try again later", 429);
    db.run("delete from codes where address = :address and purpose = :purpose", {address, stored(purpose)});
    db.run("insert into codes (address, purpose, code, expires_at, tries_left, window_start, sent_in_window)"
           " values (:address, :purpose, :code, :expires, :tries, :start, :sent)",
        {address, stored(purpose), code, now + lifetime_, tries, sameWindow ? last->windowStart : now,
            sent + 1});
    // Whoever asks learns nothing of who has an account: one without is answered alike, and told nothing.
    const bool wanted = purpose != Purpose::Reset || findUser(db, address);
    db.commit();
    if (!wanted)
        return success(true);

    outbox_.put(way, address,
        "Purpose: " + told(purpose) + "\nCode: " + code + "\nValid for: " + std::to_string(lifetime_)
            + " seconds\n");
    return success(true);
}

void Codes::redeem(
    Database::Work& db, const std::string& address, Purpose purpose, const std::string& code) const
{
    const auto valid =
        db.one<ValidCode>("select code, tries_left from codes where address = :address and purpose = :purpose"
                          " and expires_at > :now and code <> ''",
            {address, stored(purpose), clock_.now()});
    if (!valid)
        throw Refusal("There is no valid verification code; ask for a new one");
    if (valid->triesLeft <= 0)
        throw Refusal("Too many wrong verification codes; ask for a new one");
    if (!sameSecret(valid->code, code)) {
        db.run("update codes set tries_left = tries_left - 1 where address = :address and purpose = :purpose",
            {address, stored(purpose)});
        db.commit();
        throw Refusal("The verification code is wrong");
    }
    // The row stays: it counts what was sent.
    db.run("update codes set code = '' where address = :address and purpose = :purpose",
        {address, stored(purpose)});
}

} // namespace local_platform
