// SPDX-FileCopyrightText: The Quorvane project
// SPDX-License-Identifier: MIT

// Tells a long wait of a playback whether the player wants out. The program's version looks at
// SDL's events; a program without events links one that always answers no.

#pragma once

// True once the session has been told to end, and when a window close or a release of Escape is
// pending: that event stays in the queue. All other events, which a playback ignores, are taken
// out, or a full queue would keep the one that matters from getting in.
bool interrupt_pending();

// Notes that the player has asked to end the session (true), or that a session begins (false): the
// frame in which a close or Escape has been taken still ticks once, and must not wait for days.
void interrupt_set(bool requested);
