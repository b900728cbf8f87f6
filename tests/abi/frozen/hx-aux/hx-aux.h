// SPDX-License-Identifier: LicenseRef-HXAux
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
