// SPDX-FileCopyrightText: The Quorvane project
// SPDX-License-Identifier: CC-BY-4.0

// The red enemy: a barbed star of forged blades around a furnace. Nothing on it is round.

#include "ships.inc"

#declare Iron = texture {
    pigment { srgb <0.86, 0.10, 0.06> }
    finish {
        diffuse 0.8
        ambient 0
        emission 0.14
        specular 0.8
        roughness 0.03
        metallic
        reflection { 0.05, 0.25 metallic }
    }
}

// A blade in the direction of Degrees (0 = forward), of four facets over a ridge; Reach is where its
// point is, Hook bends the point aside.
#macro Blade(Degrees, Reach, Width, Height, Hook)
    #local A = radians(Degrees);
    #local Out = <sin(A), cos(A), 0>;
    #local Side = <cos(A), -sin(A), 0>;
    #local Point = Out * Reach + Side * Hook;
    #local Top = Out * 0.16 - Height * z;
    #local L = Out * (0.30 * Reach) - Side * Width;
    #local R = Out * (0.30 * Reach) + Side * Width;
    #local Back = Out * -0.05 - (Height * 0.6) * z;
    mesh {
        triangle { Point, L, Top }
        triangle { Point, R, Top }
        triangle { Back, L, Top }
        triangle { Back, R, Top }
        texture { Iron }
    }
    union {
        Bar(Point, 0.004, Top, 0.012)
        Bar(Point, 0.004, R, 0.011)
        Bar(Point, 0.004, L, 0.011)
        texture { pigment { srgb <1.0, 0.50, 0.28> } finish { diffuse 0.7 emission 0.7 specular 0.6 } }
    }
#end

Blade(0, 0.95, 0.155, 0.24, 0)
Blade(48, 0.70, 0.13, 0.20, -0.05)
Blade(-48, 0.70, 0.13, 0.20, 0.05)
Blade(112, 0.95, 0.16, 0.20, 0.10)
Blade(-112, 0.95, 0.16, 0.20, -0.10)
Blade(160, 0.86, 0.12, 0.18, 0.10)
Blade(-160, 0.86, 0.12, 0.18, -0.10)

// Char between the blades
#for (I, 0, 6)
    #local A = radians(24 + 360 / 7 * I);
    cone { <0.22 * sin(A), 0.22 * cos(A), -0.10>, 0.09, <0.33 * sin(A), 0.33 * cos(A), -0.02>, 0.03
        texture { pigment { srgb <0.20, 0.02, 0.02> } finish { diffuse 0.6 specular 0.5 metallic } } }
#end

// The furnace: a cut crystal in a dark frame
#declare Cut = mesh {
    #local Up = <0, 0.33, -0.22>;
    #local Down = <0, -0.33, -0.22>;
    #local Left = <-0.20, -0.02, -0.22>;
    #local Right = <0.20, -0.02, -0.22>;
    #local Peak = <0, 0.02, -0.40>;
    triangle { Up, Left, Peak }
    triangle { Up, Right, Peak }
    triangle { Down, Left, Peak }
    triangle { Down, Right, Peak }
}
object {
    Cut
    scale <1.32, 1.32, 0.9>
    texture { pigment { srgb <0.13, 0.015, 0.02> } finish { diffuse 0.7 specular 0.6 roughness 0.05 } }
}
object {
    Cut
    translate -0.06 * z
    texture {
        pigment {
            gradient y
            scale 0.7
            translate -0.35 * y
            color_map { [0 srgb <1, 0.42, 0.10>] [0.5 srgb <1, 0.93, 0.70>] [1 srgb <1, 0.55, 0.18>] }
        }
        finish { emission 0.85 diffuse 0.5 specular 0.8 roughness 0.02 }
    }
}
