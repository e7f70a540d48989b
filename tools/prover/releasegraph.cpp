#include "releasegraph.h"

#include <algorithm>

namespace {

constexpr int rowHeight = 40;
constexpr int boxHeight = 32;
constexpr int topMargin = 34;

/// The columns of the picture: where their boxes begin, how wide they are.
struct Column
{
    int x;
    int width;
};
constexpr Column starts{4, 400};
constexpr Column releases{540, 300};
constexpr Column ends{1010, 270};
constexpr int pictureWidth = 1284;

/// Letters that fit into a box.
constexpr int lettersIn(const Column& column)
{
    return column.width / 7;
}

struct Node
{
    QString key;
    QString title;
    QString detail;
    QString style;
    int y = 0; ///< middle of its box
};

QString shortened(const QString& text, int letters)
{
    return text.size() <= letters ? text : text.left(letters - 1) + QChar(0x2026);
}

/// The picture of one family.
class Graph
{
public:
    explicit Graph(const FamilyProof& family);

    QString svg() const;

private:
    void addStarts();
    void addReleases();
    void addEnds();
    void addReached(const ReportedVersions& hop);
    void spread(QVector<Node>* nodes) const;

    int releaseOf(const ReportedVersions& hop) const;
    QString edges() const;
    QStringList edgesOf(const JourneyRange& range, int start) const;
    static QString boxes(const QVector<Node>& nodes, const Column& column);
    static QString edge(int fromX, int fromY, int toX, int toY, const QString& style);
    static QString arc(int fromY, int toY, const QString& style);

    const FamilyProof& m_family;
    QVector<Node> m_starts;
    QVector<Node> m_releases;
    QVector<Node> m_ends;
    int m_height = 0;
};

QString styleOf(const Journey& journey)
{
    if (isDeadEnd(journey.ending))
        return QStringLiteral("dead");
    if (journey.ending == Ending::NotServed)
        return QStringLiteral("idle");
    return journey.isOrderly ? QStringLiteral("good") : QStringLiteral("unsure");
}

Graph::Graph(const FamilyProof& family) : m_family(family)
{
    addStarts();
    addReleases();
    addEnds();
    const int rows = std::max({m_starts.size(), m_releases.size(), m_ends.size(), 1});
    m_height = topMargin + rows * rowHeight + 6;
    spread(&m_starts);
    spread(&m_releases);
    spread(&m_ends);
}

void Graph::addStarts()
{
    for (const JourneyRange& range : m_family.table) {
        m_starts += {QString(), QStringLiteral("Pt ") + ptText(m_family, range),
                     QStringLiteral("Ct ") + ctText(m_family, range), styleOf(range.journey)};
    }
}

void Graph::addReleases()
{
    for (const FamilyProof::Release& release : m_family.releases) {
        m_releases += {release.pt, QStringLiteral("%1, Ct %2").arg(release.pt, release.ct),
                       release.file, QStringLiteral("release")};
    }
    for (const JourneyRange& range : m_family.table) {
        for (const ReportedVersions& hop : range.journey.hops)
            addReached(hop);
    }
}

// What runs lead to and no image is named after.
void Graph::addReached(const ReportedVersions& hop)
{
    if (releaseOf(hop) >= 0)
        return;
    const QString key = hop.pt.isEmpty() ? hopText(hop) : hop.pt;
    m_releases += {key, key, QString(), QStringLiteral("other")};
}

void Graph::addEnds()
{
    for (const JourneyRange& range : m_family.table) {
        const QString text = endingText(range.journey.ending);
        const bool isKnown = std::any_of(m_ends.begin(), m_ends.end(),
                                         [&](const Node& node) { return node.key == text; });
        if (isKnown)
            continue;
        const bool isDead = isDeadEnd(range.journey.ending);
        const bool isNewest = range.journey.ending == Ending::Newest;
        m_ends += {text, text,
                   isDead     ? QStringLiteral("dead end")
                   : isNewest ? m_family.goal
                              : QString(),
                   isDead     ? QStringLiteral("dead")
                   : isNewest ? QStringLiteral("good")
                              : QStringLiteral("idle")};
    }
}

void Graph::spread(QVector<Node>* nodes) const
{
    const int room = m_height - topMargin;
    for (int index = 0; index < nodes->size(); ++index)
        (*nodes)[index].y = topMargin + room * (2 * index + 1) / (2 * nodes->size());
}

int Graph::releaseOf(const ReportedVersions& hop) const
{
    // A run that moves Ct alone leads to the release that brings it.
    const auto isIt = [&](const Node& node) {
        return hop.pt.isEmpty() ? node.key == hopText(hop) ||
                                      (!hop.ct.isEmpty() &&
                                       node.title.endsWith(QStringLiteral(", Ct ") + hop.ct))
                                : node.key == hop.pt;
    };
    const auto found = std::find_if(m_releases.rbegin(), m_releases.rend(), isIt);
    return found == m_releases.rend() ? -1 : static_cast<int>(m_releases.rend() - found) - 1;
}

QString Graph::svg() const
{
    const QString title = QStringLiteral("Ways of the family %1").arg(m_family.family.name);
    QString svg = QStringLiteral("<svg viewBox=\"0 0 %1 %2\" role=\"img\" aria-label=\"%3\">\n")
                      .arg(pictureWidth)
                      .arg(m_height)
                      .arg(escaped(title));
    const auto heading = [](const Column& column, const char* text) {
        return QStringLiteral("<text class=\"heading\" x=\"%1\" y=\"20\">%2</text>\n")
            .arg(column.x)
            .arg(QLatin1String(text));
    };
    svg += heading(starts, "Controllers that run") + heading(releases, "Releases") +
           heading(ends, "Where it ends");
    svg += edges() + boxes(m_starts, starts) + boxes(m_releases, releases) + boxes(m_ends, ends);
    return svg + QStringLiteral("</svg>\n");
}

// Each edge once, the dead ends on top.
QString Graph::edges() const
{
    QStringList good;
    QStringList dead;
    for (int start = 0; start < m_starts.size(); ++start) {
        const JourneyRange& range = m_family.table.at(start);
        (isDeadEnd(range.journey.ending) ? dead : good) += edgesOf(range, start);
    }
    good.removeDuplicates();
    dead.removeDuplicates();
    return good.join(QString()) + dead.join(QString());
}

QStringList Graph::edgesOf(const JourneyRange& range, int start) const
{
    const Journey& journey = range.journey;
    const QString style = styleOf(journey);
    const QString ending = endingText(journey.ending);
    const int end =
        static_cast<int>(std::find_if(m_ends.begin(), m_ends.end(),
                                      [&](const Node& node) { return node.key == ending; }) -
                         m_ends.begin());
    const int fromStart = starts.x + starts.width;
    if (journey.hops.isEmpty())
        return {edge(fromStart, m_starts.at(start).y, ends.x, m_ends.at(end).y, style)};
    QStringList edges;
    int at = releaseOf(journey.hops.constFirst());
    edges += edge(fromStart, m_starts.at(start).y, releases.x, m_releases.at(at).y, style);
    for (const ReportedVersions& hop : journey.hops.mid(1)) {
        const int next = releaseOf(hop);
        edges += arc(m_releases.at(at).y, m_releases.at(next).y, style);
        at = next;
    }
    edges +=
        edge(releases.x + releases.width, m_releases.at(at).y, ends.x, m_ends.at(end).y, style);
    return edges;
}

QString Graph::boxes(const QVector<Node>& nodes, const Column& column)
{
    QString svg;
    for (const Node& node : nodes) {
        const int top = node.y - boxHeight / 2;
        svg += QStringLiteral("<g class=\"node %1\"><title>%2</title>"
                              "<rect x=\"%3\" y=\"%4\" width=\"%5\" height=\"%6\" rx=\"4\"/>")
                   .arg(node.style, escaped(node.title + QLatin1Char('\n') + node.detail))
                   .arg(column.x)
                   .arg(top)
                   .arg(column.width)
                   .arg(boxHeight);
        const auto line = [&](const QString& text, int y, const char* style) {
            return QStringLiteral("<text class=\"%1\" x=\"%2\" y=\"%3\">%4</text>")
                .arg(QLatin1String(style))
                .arg(column.x + 8)
                .arg(y)
                .arg(escaped(shortened(text, lettersIn(column))));
        };
        const bool hasDetail = !node.detail.isEmpty();
        svg += line(node.title, node.y + (hasDetail ? -2 : 4), "first");
        svg += hasDetail ? line(node.detail, node.y + 12, "second") : QString();
        svg += QStringLiteral("</g>\n");
    }
    return svg;
}

QString Graph::edge(int fromX, int fromY, int toX, int toY, const QString& style)
{
    const int middle = (fromX + toX) / 2;
    return QStringLiteral("<path class=\"edge %1\" d=\"M%2 %3 C%4 %3 %4 %5 %6 %5\"/>\n")
        .arg(style)
        .arg(fromX)
        .arg(fromY)
        .arg(middle)
        .arg(toY)
        .arg(toX);
}

// From one release to another one, or back to itself.
QString Graph::arc(int fromY, int toY, const QString& style)
{
    const int x = releases.x + releases.width;
    const int reach = x + 60;
    const int apart = fromY == toY ? 10 : 0;
    return QStringLiteral("<path class=\"edge %1\" d=\"M%2 %3 C%4 %3 %4 %5 %2 %5\"/>\n")
        .arg(style)
        .arg(x)
        .arg(fromY - apart)
        .arg(reach)
        .arg(toY + apart);
}

} // namespace

QString escaped(const QString& text)
{
    QString shown;
    for (const QChar letter : text)
        shown += letter.isPrint() || letter.isSurrogate() || letter == QLatin1Char('\n')
                     ? letter
                     : QChar(QChar::ReplacementCharacter);
    return shown.toHtmlEscaped();
}

QString releaseGraph(const FamilyProof& family)
{
    return Graph(family).svg();
}
