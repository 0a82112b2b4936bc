// What the host draws through the debug records.
#pragma once

#include "watcher.h"

class xylDebug_render_records;

// How this host reads the records, which the library leaves to it:
//   alternate lists   lie on the ground, beneath all else
//   screen objects    filled rectangles: a, b the left upper corner, c, d the size, in pixels of a
//                     picture of 1280 by 720
//   screen text       the left end of its base line, in the same pixels
//   duration          seconds for which a line or text stays; it fades on the way

// Of one tick: the trails that the agents leave behind.
void draw_trails(const World& world, xylDebug_render_records& records);

// Of one frame, into two sets. What comes out of sums, products and square roots alone is `exact`
// and the same on every machine; `rounded` has the shapes whose builders use the processor's
// approximate root. `exact` is the set of the current frame, which some things draw themselves
// into.
void draw_scene(const World& world, const Watcher& watcher, const Sight& sight,
                xylDebug_render_records& exact, xylDebug_render_records& rounded);

// The lines of text and the bar on the screen.
void draw_screen(const World& world, const Sight& sight, int packets,
                 xylDebug_render_records& records);
