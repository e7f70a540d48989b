#include "releaseorders.h"

#include <QStringList>

#include <algorithm>

namespace {

// Beyond this, images of one release have more orders than maxOrders in any case.
constexpr int maxImagesOfARelease = 6;

class Orders
{
public:
    Orders(const DeliveredFiles& delivery, const ModelFamily& family)
        : m_images(delivery.images()), m_family(family)
    {
        for (const DeliveredImage& image : m_images)
            m_highestPt = std::max(m_highestPt, image.data->newPtVersion());
    }

    QVector<QVector<int>> all() const;

private:
    QVector<QVector<int>> groups() const;
    QVector<QVector<int>> ordersOf(QVector<int> group) const;
    QString whatCounts(const QVector<int>& order) const;
    const ZanData& image(int index) const
    {
        return *m_images.at(static_cast<std::size_t>(index)).data;
    }

    const std::vector<DeliveredImage>& m_images;
    const ModelFamily& m_family;
    VersionInfo m_highestPt;
};

QVector<QVector<int>> Orders::groups() const
{
    QVector<QVector<int>> groups;
    for (int index = 0; index < static_cast<int>(m_images.size()); ++index) {
        const bool isSame =
            index > 0 && image(index).newVornix2Version() == image(index - 1).newVornix2Version();
        if (!isSame)
            groups += QVector<int>();
        groups.last() += index;
    }
    return groups;
}

// The images of the family in their order, and the pre-release text of the highest Pt.
QString Orders::whatCounts(const QVector<int>& order) const
{
    QStringList counts;
    QString mark = QStringLiteral("none");
    for (const int index : order) {
        if (image(index).canUpdateSystemModel(m_family.model))
            counts += QString::number(index);
        const bool isFirst = mark == QLatin1String("none");
        if (isFirst && image(index).newPtVersion() == m_highestPt)
            mark = QLatin1Char('"') + image(index).getPreReleaseAppendix();
    }
    return counts.join(QLatin1Char(' ')) + mark;
}

QVector<QVector<int>> Orders::ordersOf(QVector<int> group) const
{
    QVector<QVector<int>> orders;
    QStringList seen;
    do {
        const QString counts = whatCounts(group);
        if (seen.contains(counts))
            continue;
        seen += counts;
        orders += group;
    } while (orders.size() <= maxOrders && std::next_permutation(group.begin(), group.end()));
    return orders;
}

QVector<QVector<int>> Orders::all() const
{
    QVector<QVector<int>> orders{QVector<int>()};
    for (const QVector<int>& group : groups()) {
        if (group.size() > maxImagesOfARelease)
            return {};
        QVector<QVector<int>> longer;
        for (const QVector<int>& begun : qAsConst(orders)) {
            for (const QVector<int>& next : ordersOf(group))
                longer += begun + next;
        }
        orders = longer;
        if (orders.size() > maxOrders)
            return {};
    }
    return orders;
}

} // namespace

QVector<QVector<int>> releaseOrders(const DeliveredFiles& delivery, const ModelFamily& family)
{
    return Orders(delivery, family).all();
}
