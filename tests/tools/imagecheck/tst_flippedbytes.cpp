#include "soundimages.h"

#include <fieldoffsets.h>
#include <testmain.h>

#include <QMap>

/// Names the fields of a file by their places.
class FieldNames
{
public:
    explicit FieldNames(const UpdateFile& file)
    {
        if (const auto* image = std::get_if<ControllerImage>(&file)) {
            ControllerImage copy = *image;
            imageformat::visitControllerHead(*this, copy);
            for (ControllerImageBlock& block : copy.blocks) {
                m_prefix = "block.";
                imageformat::visitBlockEntry(*this, block);
            }
        } else {
            CameraUpdateFile copy = std::get<CameraUpdateFile>(file);
            imageformat::visitCameraHead(*this, copy);
            for (CameraImage& part : copy.images) {
                m_prefix = "image.";
                imageformat::visitImageEntry(*this, part);
            }
        }
        m_prefix = "content.";
    }

    QString at(int offset) const { return m_names.value(offset, "content.records"); }

    void addContent(RecordBlock block, qint64 start)
    {
        m_offset = static_cast<int>(start);
        imageformat::visitBlockHead(*this, block);
        pass("recordLength", 2);
        pass("payloadMagic", 4);
    }

    template <typename Value>
    void word(const char* name, const Value& /*value*/)
    {
        pass(name, 2);
    }
    template <typename Value>
    void longWord(const char* name, const Value& /*value*/)
    {
        pass(name, 4);
    }
    template <typename Value>
    void version(const char* name, const Value& /*value*/, int parts)
    {
        pass(name, 2 * parts);
    }
    void date(const char* name, const ImageDate& /*date*/) { pass(name, 6); }
    void models(const char* name, const QVector<quint16>& models, std::optional<quint16> /*count*/)
    {
        pass(name, 2 * models.size());
    }
    void text(const char* name, const QByteArray& text, std::optional<quint16> /*length*/)
    {
        pass(name, text.size());
    }

private:
    void pass(const char* name, int bytes)
    {
        for (int index = 0; index < bytes; ++index)
            m_names.insert(m_offset++, m_prefix + name);
    }

    QMap<int, QString> m_names;
    QString m_prefix;
    int m_offset = 0;
};

/// Flips every bit of files that break no rule, and all bits of every byte. What the checks do not
/// find is listed here by field, with the reason why that can be borne.
class TestFlippedBytes : public QObject
{
    Q_OBJECT

private slots:
    void findsAllButTheseFields_data();
    void findsAllButTheseFields();
};

namespace {

FieldNames fieldNames(const ScannedFile& scanned)
{
    FieldNames names(*scanned.file);
    if (const auto* image = std::get_if<ControllerImage>(&*scanned.file)) {
        for (int index = 0; index < image->blocks.size(); ++index)
            names.addContent(image->blocks[index], scanned.contents[index].start);
    } else {
        const auto& file = std::get<CameraUpdateFile>(*scanned.file);
        for (int index = 0; index < file.images.size(); ++index)
            names.addContent(file.images[index], scanned.contents[index].start);
    }
    return names;
}

} // namespace

void TestFlippedBytes::findsAllButTheseFields_data()
{
    QTest::addColumn<QString>("fileName");
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QStringList>("overlooked");

    const QStringList controller{
        "block.minVersion",        // reaches lower, or an overlap would be found: only rows that
                                   // are not possible come of it, as the minimum stays
        "content.maxRecordLength", // an upper bound that is higher than it needs to be
        "content.payloadMagic",    // content of others, as which nothing is known against it; what
                                   // seals are for
        "content.text",            // nobody reads it
        "minCt",                   // a higher minimum, up to the new version: it may be meant
        "minPt",                   // the same
        "reserved1",               // nobody reads these
        "reserved2", "reserved3", "reserved4"};
    QStringList dated = controller;
    dated << "minorReleaseDate" // another day, as only people read it
          << "releaseDate";
    dated.sort();
    const QStringList camera{
        "content.maxRecordLength", // no reader of cameras looks at it
        "content.payloadMagic",    // as in images
        "content.text",            // nobody reads it
        "models",                  // another model: only who delivers the file knows which is meant
        "reserved1",               // nobody reads these
        "reserved2",
        "reserved3",
        "reserved4"};

    QTest::newRow("plain image") << "controller_v3.3.0.vx3img"
                                 << controllerImageBytes(soundImage(ImageLayout::Plain))
                                 << controller;
    QTest::newRow("dated image") << "controller_v3.3.0.vx3img" << controllerImageBytes(soundImage())
                                 << dated;
    QTest::newRow("camera file") << "camera_v1.4.0.VX2znimg" << cameraUpdateBytes(soundCameraFile())
                                 << camera;
}

void TestFlippedBytes::findsAllButTheseFields()
{
    QFETCH(const QString, fileName);
    QFETCH(const QByteArray, bytes);
    const ScannedFile sound = scan(bytes);
    QVERIFY(checkUpdateFile(sound, fileName).isEmpty());
    const FieldNames names = fieldNames(sound);

    QMap<QString, int> overlooked;
    for (int offset = 0; offset < bytes.size(); ++offset) {
        for (const int mask : {0x01, 0x02, 0x04, 0x08, 0x10, 0x20, 0x40, 0x80, 0xFF}) {
            QByteArray flipped = bytes;
            flipped[offset] = static_cast<char>(flipped[offset] ^ mask);
            if (checkUpdateFile(scan(flipped), fileName).isEmpty())
                ++overlooked[names.at(offset)];
        }
    }
    QTEST(QStringList(overlooked.keys()), "overlooked");
}

ZAN_TEST_MAIN(TestFlippedBytes)
#include "tst_flippedbytes.moc"
