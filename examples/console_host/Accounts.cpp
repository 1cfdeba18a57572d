// SPDX-License-Identifier: MIT
#include "Commands.h"
#include "Password.h"
#include "account/CloudAccountLogin.h"

namespace {

bool sessionSucceeded(bool good, const QString& what)
{
    const CloudAccountLogin* session = CloudAccountLogin::instance();
    return good || failed(what, cloudFailureText(session->getLastFailure(), session->getLastError()));
}

/// The platform's own rule: what has an "@" is an e-mail address, anything else a phone number.
bool isMail(const QString& address)
{
    return address.contains('@');
}

} // namespace

bool askForCode(const QStringList& address)
{
    CloudAccountLogin* session = CloudAccountLogin::instance();
    const QByteArray text = address[0].toLocal8Bit();
    return sessionSucceeded(
        isMail(address[0]) ? session->emailVerify(text.constData()) : session->mobileVerify(text.constData()),
        "No code was sent");
}

bool registerAccount(const QStringList& nameAddressCode)
{
    CloudAccountLogin* session = CloudAccountLogin::instance();
    const QByteArray name = nameAddressCode[0].toLocal8Bit();
    const QByteArray address = nameAddressCode[1].toLocal8Bit();
    const QByteArray code = nameAddressCode[2].toLocal8Bit();
    const QByteArray secret = password();
    const bool good = isMail(nameAddressCode[1])
        ? session->registerUserByMail(
            name.constData(), secret.constData(), address.constData(), code.constData())
        : session->registerUser(name.constData(), secret.constData(), address.constData(), code.constData());
    return sessionSucceeded(good, "The account was not registered");
}

bool askForResetCode(const QStringList& address)
{
    CloudAccountLogin* session = CloudAccountLogin::instance();
    const QByteArray text = address[0].toLocal8Bit();
    return sessionSucceeded(isMail(address[0]) ? session->emailVerify2(text.constData())
                                               : session->mobileVerify2(text.constData()),
        "No code was sent");
}

bool resetPassword(const QStringList& addressCode)
{
    const QByteArray secret = password();
    return sessionSucceeded(
        CloudAccountLogin::instance()->resetPassword(addressCode[0].toLocal8Bit().constData(),
            secret.constData(), addressCode[1].toLocal8Bit().constData()),
        "The password was not changed");
}
