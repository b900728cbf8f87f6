// SPDX-License-Identifier: LicenseRef-HXAux
/// @file hx-aux.h
/// @brief All interfaces of the library.
///
/// What an application shares with the library:
/// - The file-creation mask of the process is 0 for a moment while the library opens a named lock, writes the settings
///   file or opens the daemon's FIFO, so that every user's programs can use them. A file that another thread creates in
///   that moment gets this mask too: set the mode of such files explicitly. If the FIFO cannot be created, the mask
///   stays 0.
/// - The library's own threads take no signals. In the application's threads, handlers may run during any
///   operation. They change neither its result nor stored data; only a blocking beep (@ref Halvix::Buzzer::buzze) ends
///   early, and a wait in @ref Halvix::FirmwareUpgrade::getUpgradeStatus returns the last state.
/// - The library stays loaded when it is closed with `dlclose`, because its threads may still run.
#ifndef HX_AUX_HX_AUX_H
#define HX_AUX_HX_AUX_H

#include "hx-aux/About.h"
#include "hx-aux/Adc.h"
#include "hx-aux/AuxVersion.h"
#include "hx-aux/Backlight.h"
#include "hx-aux/Buzzer.h"
#include "hx-aux/CanSetting.h"
#include "hx-aux/Config.h"
#include "hx-aux/Diagnostic.h"
#include "hx-aux/DigIO.h"
#include "hx-aux/FirmwareUpgrade.h"
#include "hx-aux/FrontLED.h"
#include "hx-aux/HXAuxPrivate.h"
#include "hx-aux/Lightsensor.h"
#include "hx-aux/Power.h"
#include "hx-aux/Telematics.h"
#include "hx-aux/TouchScreen.h"
#include "hx-aux/TouchScreenCalib.h"
#include "hx-aux/Video.h"
#include "hx-aux/errors.h"
#include "hx-aux/status-texts.h"
#include "hx-aux/types.h"
#include "hx-aux/version-gates.h"

#endif
