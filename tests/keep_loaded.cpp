// SPDX-FileCopyrightText: The Quorvane project
// SPDX-License-Identifier: MIT

// Preloaded under the sanitizers: libraries stay in memory once they are loaded, so that a leak
// report can name the library that it is about. GL drivers are unloaded before the reports come.

extern "C" int dlclose(void* /*handle*/) { return 0; }
