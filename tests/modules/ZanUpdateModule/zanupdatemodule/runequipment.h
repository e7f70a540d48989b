#pragma once

#include "runroad.h"

#include <QMetaType>
#include <QPair>
#include <QStringList>
#include <QVector>
#include <QtTest>

/// What is connected, and how its update ends if nothing comes in between.
enum class Equipment
{
    Cascade,        ///< a master two releases behind and two slaves one release behind
    Cameras,        ///< two cameras, of which one has to be searched for afterwards
    RefusedBlock,   ///< a master and a slave that refuse records; the run goes on with the rest
    OldBackend,     ///< one controller, which is restarted by hand
    FactoryAddress, ///< one controller without a network, of which the user is warned at first
    UpToDate,       ///< nothing to do but to show the release notes
};
Q_DECLARE_METATYPE(Equipment)

/// Each kind of equipment with what a test calls it.
const QVector<QPair<Equipment, const char*>>& equipments();

/// What the backend of @p equipment says of itself.
BackendVersions backendOf(Equipment equipment);

/// Connects @p equipment, and delivers what it is to be updated with.
void connectEquipment(ModuleFixture* fixture, Equipment equipment);

/// Blocks that went out leave their file open, as the contract with hosts has it, which adds up
/// over so many runs.
void closeUpdateFiles();

/// An update on its undisturbed road, which every other one is measured by.
struct Undisturbed
{
    QVector<Place> places;
    QStringList calls;

    /// The number of the place at which the run has its last confirmation before it; if there is no
    /// run, of the last place.
    int lastBoxBeforeTheRun() const;
    /// The calls behind which the run is confirmed.
    int callsBeforeTheRun() const;
};

/// The undisturbed road with @p equipment. It is gone once for each.
Undisturbed undisturbed(Equipment equipment);

/// The text for the controllers in a line of the channel's log.
QString textOf(const QString& call);

/// The records among @p calls, each behind the controller that it went to.
QStringList sentRecords(const QStringList& calls);

/// Rows for each place of each equipment's road, and each of @p kinds of what happens there, which
/// have a column of the name @p column; the other columns are `equipment` and `place`.
template <typename Kind>
void addRowsOfPlaces(const char* column, const QVector<QPair<Kind, const char*>>& kinds)
{
    QTest::addColumn<Equipment>("equipment");
    QTest::addColumn<Kind>(column);
    QTest::addColumn<int>("place");
    for (const auto& equipment : equipments()) {
        const QVector<Place> places = undisturbed(equipment.first).places;
        for (const auto& kind : kinds) {
            for (int i = 0; i < places.size(); ++i) {
                const QString name = QStringLiteral("%1: %2 at place %3, %4")
                                         .arg(equipment.second, kind.second)
                                         .arg(i)
                                         .arg(places.at(i).name);
                QTest::newRow(qPrintable(name)) << equipment.first << kind.first << i;
            }
        }
    }
}
