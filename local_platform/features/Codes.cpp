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
constexpr long long maxToClient = 100;
constexpr long long maxToAddress = 60;
constexpr long long longAgo = 2 * 86400; // after the longest life of a code

struct SentCodes
{
    long long windowStart;
    long long inWindow;

    static SentCodes from(Database::Row& row) { return {row.number(), row.number()}; }
};

struct ValidCode
{
    std::string code;
    std::string client;
    long long triesLeft;
    long long strangersTriesLeft;

    bool mayBeTriedBy(const std::string& who) const
    {
        return (who == client ? triesLeft : strangersTriesLeft) > 0;
    }

    static ValidCode from(Database::Row& row) { return {row.text(), row.text(), row.number(), row.number()}; }
};

std::string stored(Codes::Purpose purpose)
{
    return purpose == Codes::Purpose::Reset ? "reset" : "sign-in";
}

std::string told(Codes::Purpose purpose)
{
    return purpose == Codes::Purpose::Reset ? "password reset" : "sign-in or registration";
}

Refusal tooManySent()
{
    return Refusal("Too many codes were asked for; try again later", 429);
}

} // namespace

Codes::Codes(Database& database, const Clock& clock, Outbox& outbox, long long lifetime)
    : database_(database)
    , clock_(clock)
    , outbox_(outbox)
    , lifetime_(lifetime)
    , guessing_(clock)
    , toClients_(maxToClient, window)
    , toAddresses_(maxToAddress, window)
{
}

void Codes::addTo(Routes& routes)
{
    const auto sender = [this](const std::string& way, Purpose purpose) {
        return [=](Call& call) { return send(way, call.rest(), purpose, call.client()); };
    };
    routes.add("GET", "/admin/mobile/*", sender("sms", Purpose::SignIn));
    routes.add("GET", "/admin/mobile/reset/*", sender("sms", Purpose::Reset));
    routes.add("GET", "/admin/mail/*", sender("mail", Purpose::SignIn));
    routes.add("GET", "/admin/mail/reset/*", sender("mail", Purpose::Reset));
}

Json Codes::send(
    const std::string& way, const std::string& address, Purpose purpose, const std::string& client)
{
    if (way == "sms" && !isPhone(address))
        throw Refusal("This is not a phone number");
    if (way == "mail" && !isMail(address))
        throw Refusal("This is not an e-mail address");
    const long long now = clock_.now();
    const bool familiar = guessing_.isFamiliar(address, client);
    if (toClients_.isSpent(client, now) || (!familiar && toAddresses_.isSpent(address, now)))
        throw tooManySent();

    const std::string code = randomDigits(codeLength);
    auto db = database_.work();
    const auto last =
        db.one<SentCodes>("select window_start, sent_in_window from codes where address = :address"
                          " and purpose = :purpose and client = :client",
            {address, stored(purpose), client});
    const bool sameWindow = last && last->windowStart + window > now;
    const long long sent = sameWindow ? last->inWindow : 0;
    if (sent >= maxSentInWindow)
        throw tooManySent();
    db.run("delete from codes where window_start < :long_ago", {now - longAgo});
    db.run("delete from codes where address = :address and purpose = :purpose and client = :client",
        {address, stored(purpose), client});
    db.run("insert into codes (address, purpose, client, code, expires_at, tries_left, strangers_tries_left,"
           " window_start, sent_in_window)"
           " values (:address, :purpose, :client, :code, :expires, :tries, :strangers, :start, :sent)",
        {address, stored(purpose), client, code, now + lifetime_, tries, tries,
            sameWindow ? last->windowStart : now, sent + 1});
    // Whoever asks learns nothing of who has an account: one without is answered alike, and told nothing.
    const bool wanted = purpose != Purpose::Reset || findUser(db, address);
    db.commit();
    toClients_.spend(client, now);
    toAddresses_.spend(address, now);
    if (!wanted)
        return success(true);

    outbox_.put(way, address,
        "Purpose: " + told(purpose) + "\nCode: " + code + "\nValid for: " + std::to_string(lifetime_)
            + " seconds\n");
    return success(true);
}

void Codes::redeem(Database::Work& db, const std::string& address, Purpose purpose, const std::string& code,
    const std::string& client)
{
    guessing_.requireMay(address, client);
    const auto valid = db.all<ValidCode>(
        "select code, client, tries_left, strangers_tries_left from codes"
        " where address = :address and purpose = :purpose and expires_at > :now and code <> ''",
        {address, stored(purpose), clock_.now()});
    if (valid.empty())
        throw Refusal("There is no valid verification code; ask for a new one");
    bool mayTry = false;
    bool right = false;
    for (const ValidCode& one : valid) {
        mayTry = mayTry || one.mayBeTriedBy(client);
        right = right || (one.mayBeTriedBy(client) && sameSecret(one.code, code));
    }
    if (!mayTry)
        throw Refusal("Too many wrong verification codes; ask for a new one");
    if (!right) {
        db.run("update codes set tries_left = tries_left - 1"
               " where address = :address and purpose = :purpose and client = :client",
            {address, stored(purpose), client});
        db.run("update codes set strangers_tries_left = strangers_tries_left - 1"
               " where address = :address and purpose = :purpose and client <> :client",
            {address, stored(purpose), client});
        db.commit();
        guessing_.wrong(address, client);
        throw Refusal("The verification code is wrong");
    }
    // The rows stay: they count what was sent.
    db.run("update codes set code = '' where address = :address and purpose = :purpose",
        {address, stored(purpose)});
    guessing_.right(address, client);
}

} // namespace local_platform
