# SPDX-License-Identifier: LicenseRef-HXAux
"""These tests start their units themselves."""
pytest_plugins = ["pytester"]
