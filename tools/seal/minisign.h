#pragma once

#include <QByteArray>
#include <QString>

#include <array>
#include <functional>
#include <optional>

/// @file
/// Detached Ed25519 signatures and keys in the format of the program minisign, which makes the keys
/// (`minisign -G`) and verifies and makes the same signatures. All cryptography is libsodium's.
/// Safe to use from any thread.

/// What tells keys apart, and signatures from whose key they are.
using MinisignKeyId = std::array<unsigned char, 8>;

/// Whether @p content has the form of a .minisig file, whatever it signs.
bool isMinisignSignature(const QByteArray& content);

/// The key that signatures are verified with.
class MinisignPublicKey
{
public:
    /// Takes a key as it is written in one line ("RW...", 56 characters).
    /// @return nullopt if @p text is none
    static std::optional<MinisignPublicKey> fromText(const QByteArray& text);

    /// Reads a key from @p keyOrFile, which is the key itself or the name of a file that
    /// `minisign -G` wrote.
    /// @param error must not be null; names on failure what is wrong with the file
    static std::optional<MinisignPublicKey> read(const QString& keyOrFile, QString* error);

    /// The key's id as minisign shows it: 16 hexadecimal digits.
    QString id() const;

    /// Verifies @p signatureFile, the content of a .minisig file, and the trusted comment in it.
    /// The signature may be one of the bytes or, as minisign makes it by default, of their hash.
    /// @param error must not be null; on failure one clause such as "does not fit what is signed"
    /// @return the trusted comment, which may hold any character; nullopt on failure
    std::optional<QString> verify(const QByteArray& message, const QByteArray& signatureFile,
                                  QString* error) const;

private:
    MinisignKeyId m_id;
    std::array<unsigned char, 32> m_key;
};

/// The key that signatures are made with. It is wiped from memory with the object.
class MinisignSecretKey
{
public:
    /// Asked for the password of a key that has one.
    using AskPassword = std::function<QByteArray()>;

    /// Reads a key from the content of a file that `minisign -G` wrote, with a password or without
    /// (`-W`). A password costs a second or more and up to 1 GiB of memory, as minisign has it.
    /// @param error must not be null; on failure one clause such as "is no minisign secret key"
    static std::optional<MinisignSecretKey> parse(const QByteArray& content,
                                                  const AskPassword& askPassword, QString* error);

    /// A copy is wiped as well.
    MinisignSecretKey(const MinisignSecretKey&) = default;
    /// A copy is wiped as well.
    MinisignSecretKey& operator=(const MinisignSecretKey&) = default;
    ~MinisignSecretKey();

    /// The key that verifies what this one signs.
    QString publicKeyText() const;

    /// Signs @p message as minisign does by default.
    /// @param trustedComment signed as well; one line
    /// @return the content of a .minisig file
    QByteArray sign(const QByteArray& message, const QByteArray& trustedComment) const;

private:
    MinisignSecretKey() = default;

    MinisignKeyId m_id = {};
    std::array<unsigned char, 64> m_key = {}; // the seed, then the public key
};
