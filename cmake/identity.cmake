# SPDX-FileCopyrightText: The Quorvane project
# SPDX-License-Identifier: MIT

# Who and where, for packages and desktops; nothing in the program depends on it.

set(QUORVANE_APP_ID "invalid.quorvane.quorvane")
set(QUORVANE_HOMEPAGE "https://quorvane.invalid")
set(QUORVANE_DEVELOPER "The Quorvane project")
set(QUORVANE_CONTACT "contact@quorvane.invalid")
# The day of this version, as CHANGELOG.md has it.
set(QUORVANE_RELEASE_DATE "2026-11-23")
