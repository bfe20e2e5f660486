// SPDX-FileCopyrightText: The Quorvane project
// SPDX-License-Identifier: MIT

// Tells a long wait whether the player wants out. The program's version peeks at SDL's event
// queue; a program without events links one that always answers no.

#pragma once

// True when a window close or a release of Escape is pending. The event stays in the queue.
bool interrupt_pending();
