#pragma once

#include "proof.h"

/// Looks at every class of versions of one family, in every order of equal releases.
class FamilyProver
{
public:
    /// The arguments must outlive the object.
    FamilyProver(const DeliveredFiles& delivery, const ModelFamily& family,
                 const ProofOptions& options);

    /// @param error must not be null; receives one line on failure
    std::optional<FamilyProof> prove(QString* error);
    /// What was found on the way.
    const QVector<Finding>& findings() const { return m_findings; }

private:
    /// A fault that classes have in common.
    struct Fault
    {
        ProofRule rule;
        QString text;
        QVector<bool> concerned; ///< for each pair of classes
        int example = -1;        ///< a pair that shows it best
        QVector<int> order;
    };

    void setGoal();
    void cutClasses();
    QVector<VersionInfo> ptLimits() const;
    QVector<VersionInfo> ctLimits() const;
    bool isAsked(int pt, int ct) const;

    bool examine(const QVector<int>& order, bool isFirst, QString* error);
    void examineClass(RunModel* model, int pair);
    Journey travel(RunModel* model, const ReportedVersions& start, int pair);
    Ending endingOf(const RunStep& step) const;
    bool hasArrived(const RunStep& step) const;
    void lookAt(const RunStep& step, int pair);
    void noteEnding(RunModel* model, const RunStep& last, Ending ending, int pair);
    QString whyAsked(const RunModel& model, const RunStep& last) const;
    void compareWithFirst(int pair, const Journey& journey);

    Fault& fault(ProofRule rule, const QString& text);
    void note(ProofRule rule, const QString& text, int pair);
    void reportFaults();
    Finding findingOf(const Fault& fault) const;
    QVector<bool> concernedUsual(const Fault& fault) const;
    QString rangesText(const QVector<bool>& concerned) const;
    ReportedVersions startOf(int pair) const;
    bool isUsual(int pair) const;
    const DeliveredImage& image(int index) const
    {
        return m_delivery.images().at(static_cast<std::size_t>(index));
    }

    const DeliveredFiles& m_delivery;
    const ModelFamily& m_family;
    const ProofOptions& m_options;
    FamilyProof m_proof;
    int m_goal = -1;                            ///< the image of the newest release
    QVector<std::optional<Journey>> m_journeys; ///< in the first order
    QVector<int> m_order;                       ///< the one that is looked at
    bool m_isFirstOrder = true;
    QVector<Fault> m_faults;
    QVector<Finding> m_findings;
};
