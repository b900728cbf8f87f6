# SPDX-License-Identifier: LicenseRef-HXAux
"""Hardware access for the display computer: the interfaces of libhx-aux.so.1.

    with hxaux.Backlight() as backlight:
        backlight.set_intensity(128)

An operation that answers an error code raises a subclass of hxaux.Error. hxaux.sim is a simulated unit for tests.
"""
from ._hxaux import *
from ._values import *
