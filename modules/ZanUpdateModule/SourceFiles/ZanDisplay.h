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

    /// The image of a controller row; null in other rows.
    ZanData* update() const { return m_update; }
    /// The controller of a controller row; null in other rows.
    ZanController* controller() const { return m_controller; }
    /// Number of the camera, counted from 0; 0 in other rows.
    int indexCamForUpdate() const { return m_iCam; }
    /// The file of a camera row; null in other rows.
    CamUpdateData* getCamUpdate() const { return m_camUpdate; }
    /// Whether the row is selected for the run; at first, what updatePossible() says.
    bool toBeUpdated() const { return bToBeUpdated; }
    /// Whether the devices must restart after the row was run.
    bool rebootNecessary() const { return m_isRebootNecessary; }
    /// Version of the updated component before the run; VersionInfo() if none is updated.
    const VersionInfo& versionFrom() const { return viFrom; }
    /// The same as versionFrom().
    const VersionInfo& getVersionFrom() const { return viFrom; }
    /// Version of the updated component after the run; VersionInfo() if none is updated.
    const VersionInfo& versionTo() const { return viTo; }
    /// The same as versionTo().
    const VersionInfo& getVersionTo() const { return viTo; }
    /// What the row updates; ZAN_UPDATE_NOT_AVAILABLE if there is nothing to offer.
    ZAN_UPDATE_TYPE type() const { return nType; }
    /// Indexes into the image's block table, in the order in which they are streamed.
    QVector<int> updateIndexes() const { return m_update_index; }
    /// Whether the camera runs a pre-release.
    bool getCamPreRelease() const { return m_bIsCamPreRelease; }
    /// Model code of the camera in the form 0x0c01; empty in other rows.
    const QString& getCamModel() const { return m_sCamModel; }
    /// What the backend calls the camera's model; may be empty.
    const QString& getCamModelDesc() const { return m_sCamModelDesc; }
    /// Serial number of the camera as text; may be empty.
    const QString& getCamSerial() const { return m_sCamSerial; }

    /// Selects the row for the run, or not. @param state a Qt::CheckState
    void setToBeUpdated(int state);
    /// Whether the row can be run now.
    bool updatePossible() const;

    /// What is updated, with the host name of the controller or the name of the camera.
    QString typeString() const;
    /// The text of typeString() for a camera row.
    QString getCameraUpdateInfo() const;
    /// yes or no; empty in the placeholder.
    QString rebootNecessaryString() const;
    /// yes or no; empty in the placeholder.
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
