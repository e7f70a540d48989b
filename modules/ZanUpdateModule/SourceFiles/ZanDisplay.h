#pragma once

#include "globaldefines.h"

#include <VersionInfo>

#include <QString>
#include <QVector>

class CamUpdateData;
class ZanController;
class ZanData;

/// One row of the update table and, at the same time, one unit of work of a run.
///
/// A controller row pairs a controller with the blocks of one image that it needs, a camera row a
/// camera with a camera update file, and a placeholder says that there is nothing to offer. The
/// content is fixed at construction, except for the selection. Owned by the inventory, never
/// copied; what it points to is the inventory's as well.
class ZanDisplay
{
public:
    /// A controller row; it moves the controller's running position if the image applies. Two null
    /// pointers give the placeholder.
    ZanDisplay(ZanController* controller, ZanData* update);
    /// A camera row. @param iCam number of the camera, counted from 0
    ZanDisplay(CamUpdateData* camUpdate, int iCam, const QString& model, const QString& serial,
               const QString& modelDesc, const VersionInfo& from, bool preRelease);
    ZanDisplay(const ZanDisplay&) = delete;
    ZanDisplay& operator=(const ZanDisplay&) = delete;

    ZanData* update() const { return m_update; }
    ZanController* controller() const { return m_controller; }
    int indexCamForUpdate() const { return m_iCam; }
    CamUpdateData* getCamUpdate() const { return m_camUpdate; }
    bool toBeUpdated() const { return bToBeUpdated; }
    bool rebootNecessary() const { return m_isRebootNecessary; }
    const VersionInfo& versionFrom() const { return viFrom; }
    const VersionInfo& getVersionFrom() const { return viFrom; }
    const VersionInfo& versionTo() const { return viTo; }
    const VersionInfo& getVersionTo() const { return viTo; }
    ZAN_UPDATE_TYPE type() const { return nType; }
    /// Indexes into the image's block table, in the order in which they are streamed.
    QVector<int> updateIndexes() const { return m_update_index; }
    bool getCamPreRelease() const { return m_bIsCamPreRelease; }
    const QString& getCamModel() const { return m_sCamModel; }
    const QString& getCamModelDesc() const { return m_sCamModelDesc; }
    const QString& getCamSerial() const { return m_sCamSerial; }

    /// Selects the row for the run, or not. @param state a Qt::CheckState
    void setToBeUpdated(int state);
    /// Whether the row can be run now.
    bool updatePossible() const;

    // The texts of the columns.
    QString typeString() const;
    QString getCameraUpdateInfo() const;
    QString rebootNecessaryString() const;
    QString updatePossibleString() const;

private:
    void tryApplyUpdate(VersionInfo* currentCt, VersionInfo* currentPt);
    bool chooseBlocks(const VersionInfo& currentCt, VersionInfo* currentPt);
    void chooseFirmwareBlock(int index, VersionInfo* currentPt);

    bool bToBeUpdated = false;
    ZAN_UPDATE_TYPE nType = ZAN_UPDATE_NOT_AVAILABLE;
    bool m_isPossible = false;
    bool m_isRebootNecessary = false;
    VersionInfo viFrom;
    VersionInfo viTo;
    ZanController* m_controller = nullptr;
    ZanData* m_update = nullptr;
    QVector<int> m_update_index;
    int m_iCam = 0;
    CamUpdateData* m_camUpdate = nullptr;
    bool m_bIsCamPreRelease = false;
    QString m_sCamModel;
    QString m_sCamModelDesc;
    QString m_sCamSerial;
};
