# SPDX-License-Identifier: LicenseRef-HXAux
"""Prints where this Python finds packages that are installed under a prefix, relative to it."""
import sys
import sysconfig

prefix = sys.argv[1].rstrip("/")
is_debian = "deb_system" in sysconfig.get_scheme_names()
scheme = "deb_system" if is_debian and prefix == "/usr" else "posix_prefix"
path = sysconfig.get_path("platlib", scheme, {"base": "", "platbase": ""}).lstrip("/")
print(path.replace("site-packages", "dist-packages") if is_debian else path)
