#include "sealfixtures.h"

#include <childprocess.h>

#include <QFile>

#include <sodium.h>

ProgramRun runIn(const QString& folder, const QString& program, const QStringList& arguments,
                 const QByteArray& input)
{
    ChildProcess process;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert("LC_ALL", "C.UTF-8");
    process.setProcessEnvironment(environment);
    process.setWorkingDirectory(folder);
    process.start(program, arguments);
    process.write(input);
    process.closeWriteChannel();
    if (!process.waitForEnd())
        qFatal("%s did not run: %s", qPrintable(program), qPrintable(process.errorString()));
    return {process.exitCode(), QString::fromUtf8(process.readAllStandardOutput()),
            QString::fromUtf8(process.readAllStandardError())};
}

QByteArray contentOf(const QString& path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("cannot be read");
}

QByteArray changedSecretKey(const std::function<void(QByteArray*)>& change)
{
    const QList<QByteArray> lines = QByteArray(sample::secretKeyFile).split('\n');
    QByteArray bytes = QByteArray::fromBase64(lines[1]);
    change(&bytes);
    return lines[0] + '\n' + bytes.toBase64() + '\n';
}

QByteArray hiddenKey(const QByteArray& password)
{
    constexpr quint64 cost = crypto_pwhash_scryptsalsa208sha256_OPSLIMIT_MIN;
    constexpr quint64 memory = crypto_pwhash_scryptsalsa208sha256_MEMLIMIT_MIN;
    const auto number = [](quint64 value) {
        QByteArray bytes(8, '\0');
        for (int i = 0; i < 8; ++i)
            bytes[i] = char(value >> (8 * i));
        return bytes;
    };
    return changedSecretKey([&](QByteArray* bytes) {
        const QByteArray salt(32, 's');
        QByteArray hidden = bytes->mid(54, 72);
        const QByteArray summed = "Ed" + hidden;
        QByteArray sum(32, '\0');
        crypto_generichash(reinterpret_cast<uchar*>(sum.data()), 32,
                           reinterpret_cast<const uchar*>(summed.constData()),
                           std::size_t(summed.size()), nullptr, 0);
        hidden += sum;
        QByteArray mask(hidden.size(), '\0');
        if (crypto_pwhash_scryptsalsa208sha256(
                reinterpret_cast<uchar*>(mask.data()), std::size_t(mask.size()),
                password.constData(), std::size_t(password.size()),
                reinterpret_cast<const uchar*>(salt.constData()), cost, memory) != 0)
            qFatal("no memory for the fixture");
        for (int i = 0; i < hidden.size(); ++i)
            hidden[i] = char(hidden[i] ^ mask[i]);
        *bytes = "EdScB2" + salt + number(cost) + number(memory) + hidden;
    });
}
