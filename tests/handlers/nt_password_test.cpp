// SPDX-License-Identifier: MIT
#include "handlers/nt_password.h"

#define OPENSSL_SUPPRESS_DEPRECATED
#include <openssl/md4.h>

#include <array>
#include <cstdio>
#include <gtest/gtest.h>
#include <string>
#include <vector>

#include "tests/support/faults.h"
#include "tests/support/root.h"

namespace {

const std::string kPasswordHash = "8846F7EAEE8FB117AD06BDD830B7586C"; // of "password"
const std::string kEmptyHash = "31D6CFE0D16AE931B73C59D7E0C089C0";

SmbPasswdEntry account(const std::string& name, const std::string& hash)
{
    SmbPasswdEntry entry = {};
    name.copy(entry.name, sizeof entry.name - 1);
    hash.copy(entry.ntHash, sizeof entry.ntHash);
    return entry;
}

/// Checks a password against an account with this hash.
int check(const std::string& hash, const std::string& password)
{
    const SmbPasswdEntry entry = account("anna", hash);
    return checkNtPassword(&entry, "anna", password.c_str());
}

/// The hash of a password in ISO-8859-1.
std::string hashOf(const std::string& password)
{
    std::string wide;
    for (const char c : password) {
        wide += c;
        wide += '\0';
    }
    std::array<unsigned char, MD4_DIGEST_LENGTH> digest{};
    ::MD4(reinterpret_cast<const unsigned char*>(wide.data()), wide.size(), digest.data());
    std::string hex;
    for (const unsigned char byte : digest) {
        std::array<char, 3> digits{};
        std::snprintf(digits.data(), digits.size(), "%02X", byte);
        hex += digits.data();
    }
    return hex;
}

class NtPassword : public root::Test {
  protected:
    void TearDown() override
    {
        EXPECT_EQ(faults::openConverters(), 0);
        root::Test::TearDown();
    }
};

// ---- Hashes -----------------------------------------------------------------------------------

TEST_F(NtPassword, knownHashesMatchTheirPasswords)
{
    struct Row {
        const char* password;
        const char* hash;
    };
    const std::vector<Row> rows = {
        {"", "31D6CFE0D16AE931B73C59D7E0C089C0"},
        {"a", "186CB09181E2C2ECAAC768C47C729904"},
        {"abc", "E0FBA38268D0EC66EF1CB452D5885E53"},
        {"test", "0CB6948805F797BF2A82807973B89537"},
        {"admin", "209C6174DA490CAEB422F3FA5A7AE634"},
        {"123456", "32ED87BDB5FDC5E9CBA88547376818D4"},
        {"password", "8846F7EAEE8FB117AD06BDD830B7586C"},
        {"Password", "A4F49C406510BDCAB6824EE7C30FD852"},
        {"SecREt01", "CD06CA7C7E10C99B1D33B7485A2ED808"},
        {"MyPw", "FC156AF7EDCD6C0EDDE3337D427F4EAC"},
        {"clientPass", "44EBBA8D5312B8D611474411F56989AE"},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(check(row.hash, row.password), 0) << row.password;
        EXPECT_EQ(hashOf(row.password), row.hash) << row.password;
        for (const auto& other : rows) {
            EXPECT_EQ(check(row.hash, other.password), (&row == &other) ? 0 : -1)
                << row.password << " and " << other.password;
        }
    }
}

TEST_F(NtPassword, characterAbove7FIsOneCharacter)
{
    const std::string accented = "E77286D072C7858E9110CC3A011D2AC8"; // of U+00E9
    EXPECT_EQ(check(accented, "\xE9"), 0);
    EXPECT_EQ(check(accented, "\xC3\xA9"), -1);
    EXPECT_EQ(check(accented, "\xC9"), -1);
    EXPECT_EQ(check(accented, "e"), -1);
    EXPECT_EQ(check("B1DB12409C00D1FC586FC48ECADC36A1", "caf\xE9"), 0);
    EXPECT_EQ(check("DA8B893873FB6B73F8E7A8894C471620", "\xFF"), 0);
    EXPECT_EQ(check("8CEAD5BBB29D500A9D567E23AED03014", "\x80"), 0);
}

TEST_F(NtPassword, everyByteIsACharacter)
{
    std::string all;
    for (int value = 1; value < 256; ++value) {
        const std::string one(1, static_cast<char>(value));
        EXPECT_EQ(check(hashOf(one), one), 0) << value;
        EXPECT_EQ(check(hashOf(one), std::string(1, static_cast<char>(value ^ 1))), -1) << value;
        all += one;
    }
    EXPECT_EQ(check(hashOf(all), all), 0);
}

TEST_F(NtPassword, everyLengthIsHashedWhole)
{
    std::string password;
    for (int size = 0; size <= 300; ++size) {
        EXPECT_EQ(check(hashOf(password), password), 0) << size;
        EXPECT_EQ(check(hashOf(password), password + "x"), -1) << size;
        password += static_cast<char>('a' + size % 26);
    }
    const std::string longest(100000, 'l');
    EXPECT_EQ(check(hashOf(longest), longest), 0);
}

TEST_F(NtPassword, caseAndBlanksOfAPasswordCount)
{
    EXPECT_EQ(check(kPasswordHash, "PASSWORD"), -1);
    EXPECT_EQ(check(kPasswordHash, " password"), -1);
    EXPECT_EQ(check(kPasswordHash, "password "), -1);
    EXPECT_EQ(check(kPasswordHash, "password\n"), -1);
    EXPECT_EQ(check(hashOf("password "), "password "), 0);
}

TEST_F(NtPassword, hashItselfIsNotThePassword)
{
    EXPECT_EQ(check(kPasswordHash, kPasswordHash), -1);
}

TEST_F(NtPassword, emptyPasswordIsAPassword)
{
    EXPECT_EQ(check(kEmptyHash, ""), 0);
    EXPECT_EQ(check(kEmptyHash, " "), -1);
    EXPECT_EQ(check(kPasswordHash, ""), -1);
}

// ---- How a hash is written --------------------------------------------------------------------

TEST_F(NtPassword, caseOfAHashDoesNotMatter)
{
    EXPECT_EQ(check("8846f7eaee8fb117ad06bdd830b7586c", "password"), 0);
    EXPECT_EQ(check("8846f7EAee8FB117Ad06bDd830b7586C", "password"), 0);
}

TEST_F(NtPassword, eachDigitOfAHashCounts)
{
    for (std::size_t i = 0; i < kPasswordHash.size(); ++i) {
        std::string hash = kPasswordHash;
        hash[i] = (hash[i] == '0') ? '1' : '0';
        EXPECT_EQ(check(hash, "password"), -1) << i;
    }
}

TEST_F(NtPassword, characterThatIsNoDigitVerifiesNothing)
{
    const std::string digits = "0123456789ABCDEFabcdef";
    for (std::size_t i = 0; i < kPasswordHash.size(); ++i) {
        for (int value = 1; value < 256; ++value) {
            std::string hash = kPasswordHash;
            hash[i] = static_cast<char>(value);
            if (digits.find(hash[i]) == std::string::npos) {
                EXPECT_EQ(check(hash, "password"), -1) << i << ": " << value;
            }
        }
    }
}

TEST_F(NtPassword, hashThatEndsEarlyVerifiesNothing)
{
    for (std::size_t size = 0; size < kPasswordHash.size(); ++size) {
        EXPECT_EQ(check(kPasswordHash.substr(0, size), "password"), -1) << size;
    }
    SmbPasswdEntry entry = account("anna", kPasswordHash);
    entry.ntHash[16] = '\0';
    EXPECT_EQ(checkNtPassword(&entry, "anna", "password"), -1);
}

TEST_F(NtPassword, longerHashVerifiesNothing)
{
    for (const char c : {'0', 'C', 'X', ' '}) {
        EXPECT_EQ(check(kPasswordHash + c, "password"), -1) << c;
    }
}

TEST_F(NtPassword, disabledPasswordVerifiesNothing)
{
    for (const std::string& hash :
         {std::string(32, 'X'), std::string(32, 'x'), std::string(32, '*'),
          std::string("NO PASSWORDXXXXXXXXXXXXXXXXXXXXX")}) {
        EXPECT_EQ(check(hash, ""), -1) << hash;
        EXPECT_EQ(check(hash, "password"), -1) << hash;
        EXPECT_EQ(check(hash, hash), -1) << hash;
    }
}

// ---- Names ------------------------------------------------------------------------------------

TEST_F(NtPassword, caseOfANameDoesNotMatter)
{
    const SmbPasswdEntry entry = account("Anna Maria", kPasswordHash);
    EXPECT_EQ(checkNtPassword(&entry, "Anna Maria", "password"), 0);
    EXPECT_EQ(checkNtPassword(&entry, "ANNA MARIA", "password"), 0);
    EXPECT_EQ(checkNtPassword(&entry, "anna maria", "password"), 0);
}

TEST_F(NtPassword, anotherNameVerifiesNothing)
{
    const SmbPasswdEntry entry = account("anna", kPasswordHash);
    for (const char* name : {"", "a", "ann", "annab", "anna ", " anna", "bnna", "anna\n"}) {
        EXPECT_EQ(checkNtPassword(&entry, name, "password"), -1) << name;
    }
    const SmbPasswdEntry nameless = account("", kPasswordHash);
    EXPECT_EQ(checkNtPassword(&nameless, "", "password"), 0);
    EXPECT_EQ(checkNtPassword(&nameless, "anna", "password"), -1);
}

TEST_F(NtPassword, onlyPlainLettersHaveTwoCases)
{
    const SmbPasswdEntry accented = account("\xE9lise", kPasswordHash);
    EXPECT_EQ(checkNtPassword(&accented, "\xE9LISE", "password"), 0);
    EXPECT_EQ(checkNtPassword(&accented, "\xC9lise", "password"), -1);
    const SmbPasswdEntry signs = account("[a]^{b}", kPasswordHash);
    EXPECT_EQ(checkNtPassword(&signs, "[A]^{B}", "password"), 0);
    EXPECT_EQ(checkNtPassword(&signs, "{a}^[b]", "password"), -1);
}

TEST_F(NtPassword, longestNameIsComparedWhole)
{
    const std::string name(255, 'n');
    const SmbPasswdEntry entry = account(name, kPasswordHash);
    EXPECT_EQ(checkNtPassword(&entry, name.c_str(), "password"), 0);
    EXPECT_EQ(checkNtPassword(&entry, name.substr(1).c_str(), "password"), -1);
    EXPECT_EQ(checkNtPassword(&entry, (name + "n").c_str(), "password"), -1);
}

// ---- The conversion ---------------------------------------------------------------------------

TEST_F(NtPassword, passwordIsConvertedFromOneEncodingToTheOther)
{
    EXPECT_EQ(check(kPasswordHash, "password"), 0);
    EXPECT_EQ(faults::lastConversion(), "ISO-8859-1 to UTF-16LE");
}

TEST_F(NtPassword, withoutAConverterNothingVerifies)
{
    const faults::Guard noConverter = faults::failIconvOpen();
    EXPECT_EQ(check(kPasswordHash, "password"), -1);
    EXPECT_EQ(check(kEmptyHash, ""), -1);
}

TEST_F(NtPassword, failedConversionVerifiesNothingAndIsClosed)
{
    const faults::Guard noConversion = faults::failIconv();
    EXPECT_EQ(check(kPasswordHash, "password"), -1);
    EXPECT_EQ(check(kEmptyHash, ""), -1);
    EXPECT_EQ(faults::openConverters(), 0);
}

TEST_F(NtPassword, checkRunsNothingAndTracesNothing)
{
    EXPECT_EQ(check(kPasswordHash, "password"), 0);
    EXPECT_EQ(check(kPasswordHash, "secret"), -1);
    EXPECT_EQ(watch::calls(), std::vector<std::string>{});
    EXPECT_EQ(root::list("/tmp"), std::vector<std::string>{});
}

} // namespace
