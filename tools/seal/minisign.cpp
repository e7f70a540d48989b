#include "minisign.h"

#include <QFile>
#include <QList>

#include <sodium.h>

#include <algorithm>
#include <cstring>

// A file holds lines of Base64, each below a line of comment. Numbers are little-endian.

namespace {

using Algorithm = std::array<unsigned char, 2>;
using PublicKeyBytes = std::array<unsigned char, crypto_sign_PUBLICKEYBYTES>;
using SignatureBytes = std::array<unsigned char, crypto_sign_BYTES>;
using Salt = std::array<unsigned char, crypto_pwhash_scryptsalsa208sha256_SALTBYTES>;
using KeyChecksum = std::array<unsigned char, crypto_generichash_BYTES>;

constexpr Algorithm ofTheBytes = {'E', 'd'}; // of keys, too
constexpr Algorithm ofTheirHash = {'E', 'D'};
constexpr Algorithm withoutPassword = {0, 0};
constexpr Algorithm withPassword = {'S', 'c'}; // scrypt
constexpr Algorithm checksum = {'B', '2'};     // BLAKE2b

const char untrustedMark[] = "untrusted comment: ";
const char trustedMark[] = "trusted comment: ";

constexpr qint64 longestKeyFile = 65536;

/// An array that leaves nothing in memory.
template <typename Array>
struct Wiped : Array
{
    ~Wiped() { sodium_memzero(this->data(), this->size()); }
};

// What a secret key's password hides: the key's id, the key and their checksum.
constexpr std::size_t hiddenSize =
    std::tuple_size_v<MinisignKeyId> + crypto_sign_SECRETKEYBYTES + std::tuple_size_v<KeyChecksum>;
using Hidden = std::array<unsigned char, hiddenSize>;

/// Takes pieces off the front of an array that holds exactly those.
class Pieces
{
public:
    template <typename Array>
    explicit Pieces(const Array& bytes) : m_next(bytes.data()), m_left(bytes.size())
    {
    }

    template <typename Piece>
    void take(Piece* piece)
    {
        Q_ASSERT(piece->size() <= m_left);
        std::memcpy(piece->data(), m_next, piece->size());
        m_next += piece->size();
        m_left -= piece->size();
    }

    quint64 takeNumber()
    {
        std::array<unsigned char, 8> bytes;
        take(&bytes);
        quint64 number = 0;
        for (std::size_t i = bytes.size(); i > 0; --i)
            number = number << 8U | bytes[i - 1];
        return number;
    }

private:
    const unsigned char* m_next;
    std::size_t m_left;
};

template <typename Array>
bool decodeBase64(const QByteArray& text, Array* bytes)
{
    std::size_t size = 0;
    const char* end = nullptr;
    const bool isRead = sodium_base642bin(bytes->data(), bytes->size(), text.constData(),
                                          static_cast<std::size_t>(text.size()), nullptr, &size,
                                          &end, sodium_base64_VARIANT_ORIGINAL) == 0;
    return isRead && size == bytes->size() && end == text.constData() + text.size();
}

template <typename... Arrays>
QByteArray encodeBase64(const Arrays&... arrays)
{
    QByteArray bytes;
    (bytes.append(reinterpret_cast<const char*>(arrays.data()), static_cast<int>(arrays.size())),
     ...);
    return bytes.toBase64();
}

const unsigned char* unsignedBytes(const QByteArray& bytes)
{
    return reinterpret_cast<const unsigned char*>(bytes.constData());
}

// The lines of a file, whatever they end with.
QList<QByteArray> linesOf(const QByteArray& content)
{
    QList<QByteArray> lines = content.split('\n');
    if (lines.last().isEmpty())
        lines.removeLast();
    for (QByteArray& line : lines) {
        if (line.endsWith('\r'))
            line.chop(1);
    }
    return lines;
}

// The line of Base64 in a key's file; empty if it is none.
QByteArray keyLine(const QByteArray& content)
{
    const QList<QByteArray> lines = linesOf(content);
    return lines.size() == 2 && lines[0].startsWith(untrustedMark) ? lines[1] : QByteArray();
}

QByteArray hashOf(const QByteArray& message)
{
    QByteArray hash(crypto_generichash_BYTES_MAX, '\0');
    crypto_generichash(reinterpret_cast<unsigned char*>(hash.data()), crypto_generichash_BYTES_MAX,
                       unsignedBytes(message), static_cast<unsigned long long>(message.size()),
                       nullptr, 0);
    return hash;
}

bool isSignedBy(const PublicKeyBytes& key, const SignatureBytes& signature,
                const QByteArray& message)
{
    return crypto_sign_verify_detached(signature.data(), unsignedBytes(message),
                                       static_cast<unsigned long long>(message.size()),
                                       key.data()) == 0;
}

QByteArray withComment(const SignatureBytes& signature, const QByteArray& comment)
{
    return QByteArray(reinterpret_cast<const char*>(signature.data()),
                      static_cast<int>(signature.size())) +
           comment;
}

QString shownId(const MinisignKeyId& id)
{
    return QString::number(Pieces(id).takeNumber(), 16)
        .toUpper()
        .rightJustified(2 * static_cast<int>(id.size()), QLatin1Char('0'));
}

/// The four lines of a signature's file.
struct SignatureFile
{
    Algorithm algorithm;
    MinisignKeyId keyId;
    SignatureBytes signature;
    QByteArray comment;
    SignatureBytes withComment; // of the signature and the comment

    static std::optional<SignatureFile> parse(const QByteArray& content)
    {
        const QList<QByteArray> lines = linesOf(content);
        std::array<unsigned char, 2 + 8 + crypto_sign_BYTES> bytes;
        SignatureFile file;
        if (lines.size() != 4 || !lines[0].startsWith(untrustedMark) ||
            !decodeBase64(lines[1], &bytes) || !lines[2].startsWith(trustedMark) ||
            !decodeBase64(lines[3], &file.withComment))
            return std::nullopt;
        Pieces pieces(bytes);
        pieces.take(&file.algorithm);
        pieces.take(&file.keyId);
        pieces.take(&file.signature);
        file.comment = lines[2].mid(static_cast<int>(std::strlen(trustedMark)));
        if (file.algorithm != ofTheBytes && file.algorithm != ofTheirHash)
            return std::nullopt;
        return file;
    }
};

/// What a secret key's file holds, the key hidden by the password if there is one.
struct SecretKeyFile
{
    Algorithm passwordAlgorithm;
    Salt salt;
    quint64 operations;
    quint64 memory;
    Wiped<Hidden> hidden;

    bool parse(const QByteArray& content)
    {
        constexpr std::size_t size = 6U + std::tuple_size_v<Salt> + 16U + hiddenSize;
        Wiped<std::array<unsigned char, size>> bytes;
        if (!decodeBase64(keyLine(content), &bytes))
            return false;
        Pieces pieces(bytes);
        Algorithm algorithm;
        Algorithm checksumAlgorithm;
        pieces.take(&algorithm);
        pieces.take(&passwordAlgorithm);
        pieces.take(&checksumAlgorithm);
        pieces.take(&salt);
        operations = pieces.takeNumber();
        memory = pieces.takeNumber();
        pieces.take(&hidden);
        return algorithm == ofTheBytes && checksumAlgorithm == checksum &&
               (passwordAlgorithm == withoutPassword || passwordAlgorithm == withPassword);
    }

    // Takes the password off.
    bool reveal(QByteArray password, QString* error)
    {
        Wiped<Hidden> mask;
        // What minisign itself takes; a damaged file could ask for years.
        const bool isBounded =
            operations <= crypto_pwhash_scryptsalsa208sha256_OPSLIMIT_SENSITIVE &&
            memory <= crypto_pwhash_scryptsalsa208sha256_MEMLIMIT_SENSITIVE;
        const bool isDone = isBounded && crypto_pwhash_scryptsalsa208sha256(
                                             mask.data(), mask.size(), password.constData(),
                                             static_cast<unsigned long long>(password.size()),
                                             salt.data(), operations, memory) == 0;
        sodium_memzero(password.data(), static_cast<std::size_t>(password.size()));
        if (!isDone) {
            *error = isBounded ? QStringLiteral("takes more memory to read than there is")
                               : QStringLiteral("is damaged");
            return false;
        }
        std::transform(hidden.begin(), hidden.end(), mask.begin(), hidden.begin(),
                       [](unsigned char a, unsigned char b) { return a ^ b; });
        return true;
    }
};

KeyChecksum checksumOf(const MinisignKeyId& id,
                       const std::array<unsigned char, crypto_sign_SECRETKEYBYTES>& key)
{
    KeyChecksum sum;
    crypto_generichash_state state;
    crypto_generichash_init(&state, nullptr, 0, sum.size());
    crypto_generichash_update(&state, ofTheBytes.data(), ofTheBytes.size());
    crypto_generichash_update(&state, id.data(), id.size());
    crypto_generichash_update(&state, key.data(), key.size());
    crypto_generichash_final(&state, sum.data(), sum.size());
    return sum;
}

// The public key in a secret one is that of its seed.
bool isConsistent(const std::array<unsigned char, crypto_sign_SECRETKEYBYTES>& key)
{
    PublicKeyBytes publicKey;
    Wiped<std::array<unsigned char, crypto_sign_SECRETKEYBYTES>> again;
    crypto_sign_seed_keypair(publicKey.data(), again.data(), key.data());
    return again == key;
}

// Has libsodium choose what suits the processor.
void prepareCryptography()
{
    static const int isReady = sodium_init();
    Q_UNUSED(isReady)
}

} // namespace

bool isMinisignSignature(const QByteArray& content)
{
    return SignatureFile::parse(content).has_value();
}

std::optional<MinisignPublicKey> MinisignPublicKey::fromText(const QByteArray& text)
{
    std::array<unsigned char, 2 + 8 + crypto_sign_PUBLICKEYBYTES> bytes;
    if (!decodeBase64(text, &bytes))
        return std::nullopt;
    Pieces pieces(bytes);
    Algorithm algorithm;
    MinisignPublicKey key;
    pieces.take(&algorithm);
    pieces.take(&key.m_id);
    pieces.take(&key.m_key);
    return algorithm == ofTheBytes ? std::make_optional(key) : std::nullopt;
}

std::optional<MinisignPublicKey> MinisignPublicKey::read(const QString& keyOrFile, QString* error)
{
    if (const auto key = fromText(keyOrFile.toLatin1()))
        return key;
    QFile file(keyOrFile);
    if (!file.open(QIODevice::ReadOnly)) {
        *error = QStringLiteral("%1: %2").arg(keyOrFile, file.errorString());
        return std::nullopt;
    }
    const std::optional<MinisignPublicKey> key = fromText(keyLine(file.read(longestKeyFile)));
    if (!key)
        *error = QStringLiteral("%1: is no minisign public key").arg(keyOrFile);
    return key;
}

QString MinisignPublicKey::id() const
{
    return shownId(m_id);
}

std::optional<QString> MinisignPublicKey::verify(const QByteArray& message,
                                                 const QByteArray& signatureFile,
                                                 QString* error) const
{
    prepareCryptography();
    const std::optional<SignatureFile> file = SignatureFile::parse(signatureFile);
    if (!file)
        *error = QStringLiteral("is no minisign signature");
    else if (file->keyId != m_id)
        *error = QStringLiteral("is made with the key %1, not %2").arg(shownId(file->keyId), id());
    else if (!isSignedBy(m_key, file->signature,
                         file->algorithm == ofTheirHash ? hashOf(message) : message))
        *error = QStringLiteral("does not fit what is signed");
    else if (!isSignedBy(m_key, file->withComment, withComment(file->signature, file->comment)))
        *error = QStringLiteral("does not fit its trusted comment");
    else
        return QString::fromUtf8(file->comment);
    return std::nullopt;
}

std::optional<MinisignSecretKey>
MinisignSecretKey::parse(const QByteArray& content, const AskPassword& askPassword, QString* error)
{
    prepareCryptography();
    SecretKeyFile file;
    if (!file.parse(content)) {
        *error = QStringLiteral("is no minisign secret key");
        return std::nullopt;
    }
    const bool hasPassword = file.passwordAlgorithm == withPassword;
    if (hasPassword && !file.reveal(askPassword(), error))
        return std::nullopt;

    MinisignSecretKey key;
    KeyChecksum sum;
    Pieces pieces(file.hidden);
    pieces.take(&key.m_id);
    pieces.take(&key.m_key);
    pieces.take(&sum);
    // Without a password minisign writes no checksum.
    const bool isSound =
        sum == checksumOf(key.m_id, key.m_key) || (!hasPassword && sum == KeyChecksum{});
    if (isSound && isConsistent(key.m_key))
        return key;
    *error = hasPassword ? QStringLiteral("cannot be read with this password")
                         : QStringLiteral("is damaged");
    return std::nullopt;
}

MinisignSecretKey::~MinisignSecretKey()
{
    sodium_memzero(m_key.data(), m_key.size());
}

QString MinisignSecretKey::publicKeyText() const
{
    PublicKeyBytes publicKey;
    std::copy(m_key.end() - publicKey.size(), m_key.end(), publicKey.begin());
    return QString::fromLatin1(encodeBase64(ofTheBytes, m_id, publicKey));
}

QByteArray MinisignSecretKey::sign(const QByteArray& message,
                                   const QByteArray& trustedComment) const
{
    const auto signatureOf = [this](const QByteArray& bytes) {
        SignatureBytes signature;
        crypto_sign_detached(signature.data(), nullptr, unsignedBytes(bytes),
                             static_cast<unsigned long long>(bytes.size()), m_key.data());
        return signature;
    };
    const SignatureBytes signature = signatureOf(hashOf(message));
    const SignatureBytes global = signatureOf(withComment(signature, trustedComment));
    return untrustedMark + QByteArray("signature made by imagetool\n") +
           encodeBase64(ofTheirHash, m_id, signature) + '\n' + trustedMark + trustedComment + '\n' +
           encodeBase64(global) + '\n';
}
