#include "equipment.h"

EquipmentState untouchedEquipment(const Scenario& scenario)
{
    EquipmentState state;
    for (const ScenarioController& origin : scenario.controllers)
        state.controllers.append(controllerFrom(origin, !state.controllers.isEmpty()));
    for (const ScenarioCamera& origin : scenario.cameras)
        state.cameras.append(cameraFrom(origin));
    return state;
}
