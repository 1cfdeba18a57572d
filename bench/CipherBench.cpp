// SPDX-License-Identifier: MIT
// The cipher beside the OpenSSL library, which main() has told not to use the processor's AES instructions.
#include "crypto/AccountCipher.h"
#include "crypto/QAESEncryption.h"

#include <benchmark/benchmark.h>
#include <openssl/evp.h>

namespace {

const QByteArray key = QByteArrayLiteral("0123456789abcdef");

void aesOurs(benchmark::State& state)
{
    const QByteArray text(int(state.range(0)) << 20, 'x');
    for (auto _ : state)
        benchmark::DoNotOptimize(
            QAESEncryption::Crypt(QAESEncryption::AES_128, QAESEncryption::CBC, text, key, key));
    state.SetBytesProcessed(state.iterations() * text.size());
}

void aesReference(benchmark::State& state)
{
    const QByteArray text(int(state.range(0)) << 20, 'x');
    const auto* bytes = reinterpret_cast<const unsigned char*>(text.constData());
    const auto* secret = reinterpret_cast<const unsigned char*>(key.constData());
    for (auto _ : state) {
        QByteArray out(text.size() + 16, Qt::Uninitialized);
        int size = 0;
        EVP_CIPHER_CTX* context = EVP_CIPHER_CTX_new();
        EVP_EncryptInit_ex(context, EVP_aes_128_cbc(), nullptr, secret, secret);
        EVP_EncryptUpdate(context, reinterpret_cast<unsigned char*>(out.data()), &size, bytes, text.size());
        EVP_CIPHER_CTX_free(context);
        benchmark::DoNotOptimize(out);
    }
    state.SetBytesProcessed(state.iterations() * text.size());
}

void passwordText(benchmark::State& state)
{
    for (auto _ : state)
        benchmark::DoNotOptimize(aesEncryptText(QStringLiteral("twelve-chars"), key, key));
}

BENCHMARK(aesOurs)->Name("aes-128-cbc MiB/ours")->Arg(1)->Arg(4)->Arg(16)->Unit(benchmark::kMillisecond);
BENCHMARK(aesReference)
    ->Name("aes-128-cbc MiB/openssl")
    ->Arg(1)
    ->Arg(4)
    ->Arg(16)
    ->Unit(benchmark::kMillisecond);
BENCHMARK(passwordText)->Name("aesEncryptText of 12 characters/ours")->Unit(benchmark::kMicrosecond);

} // namespace
