// SPDX-FileCopyrightText: The Quorvane project
// SPDX-License-Identifier: CC-BY-4.0

// The blue enemy: a pearly crescent, horns forward, that carries a ringed orb of light. Nothing on
// it has a corner.

#include "ships.inc"

// The crescent: a flat ellipsoid less a tilted, smaller one
#macro Crescent(Grow)
    difference {
        sphere { 0, 0.86 + Grow scale <1, 1, 0.34> translate <0, -0.02, 0> }
        sphere { 0, 0.655 - Grow scale <1, 1, 3> translate <0, 0.37, 0> }
        plane { -z, -0.02 }
    }
#end
object {
    Crescent(0)
    texture {
        pigment {
            gradient y
            scale 1.8
            translate -0.95 * y
            color_map {
                [0.00 srgb <0.62, 0.88, 1.00>]
                [0.35 srgb <0.16, 0.50, 1.00>]
                [0.75 srgb <0.10, 0.36, 0.92>]
                [1.00 srgb <0.70, 0.95, 1.00>]
            }
        }
        finish {
            diffuse 0.75
            ambient 0
            emission 0.10
            specular 0.9
            roughness 0.02
            reflection { 0.08, 0.45 }
        }
    }
}

// A seam of light around it, and ribs across
#declare Seam = union {
    #local N = 30;
    #for (I, 0, N - 1)
        #local A0 = radians(-205 + 230 * I / N);
        #local A1 = radians(-205 + 230 * (I + 1) / N);
        Bar(<0.745 * cos(A0), 0.745 * sin(A0) - 0.02, -0.150>, 0.020,
            <0.745 * cos(A1), 0.745 * sin(A1) - 0.02, -0.150>, 0.020)
    #end
}
object { Seam Glow(<0.75, 0.97, 1.0>, 1.1) }
union {
    #for (I, 0, 4)
        #local A = radians(-150 + 30 * I);
        Bar(<0.40 * cos(A), 0.40 * sin(A) - 0.02, -0.245>, 0.020,
            <0.62 * cos(A), 0.62 * sin(A) - 0.02, -0.185>, 0.026)
    #end
    texture { pigment { srgb <0.02, 0.12, 0.42> } finish { diffuse 0.6 specular 0.5 } }
}

// The orb and its ring
sphere {
    <0, 0.12, -0.2>, 0.285
    texture {
        pigment {
            spherical
            translate <-0.25, 0.35, -1.0>
            scale 0.42
            translate <0, 0.12, -0.2>
            color_map { [0 srgb <0.30, 0.66, 1.0>] [0.6 srgb <0.72, 0.95, 1.0>] [1 srgb <1, 1, 1>] }
        }
        finish { emission 0.75 diffuse 0.35 specular 1 roughness 0.01 reflection { 0.05, 0.4 } }
    }
}
torus {
    0.425, 0.045
    rotate 90 * x
    translate <0, 0.12, -0.16>
    Metal(<0.80, 0.93, 1.0>, 0.25, 0.02)
}
