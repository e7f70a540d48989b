#pragma once

#include "runmodel.h"

/// @file
/// The orders in which the plug-in may take the images of a delivery. Images of one release have no
/// order among themselves.

/// The most orders that are looked at.
constexpr int maxOrders = 48;

/// All orders that can make a difference to controllers of @p family: images of other families
/// count only for the pre-release text of the highest Pt, which the first image that brings it
/// gives. The first order is that of the names.
/// @return nothing if there are more than maxOrders
QVector<QVector<int>> releaseOrders(const DeliveredFiles& delivery, const ModelFamily& family);
