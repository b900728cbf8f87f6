# SPDX-License-Identifier: LicenseRef-HXAux
"""Generates the bindings from the public headers."""
