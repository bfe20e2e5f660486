// SPDX-FileCopyrightText: The Quorvane project
// SPDX-License-Identifier: CC-BY-4.0

// The player's ship: a silver dart of flat facets, two engines under a dark glass canopy. z is
// toward -z for the viewer.

#include "ships.inc"

#declare Nose = <0, 0.86, -0.02>;
#declare Brow = <0, 0.34, -0.15>;
#declare Spine = <0, -0.18, -0.20>;
#declare Tail = <0, -0.50, -0.12>;
#declare Cheek = <0.085, 0.40, -0.02>;
#declare Flank = <0.150, 0.02, -0.02>;
#declare Hip = <0.170, -0.46, -0.02>;
#declare Rib = <0.070, 0.05, -0.16>;
#declare Haunch = <0.095, -0.36, -0.16>;
#declare Root = <0.12, 0.20, -0.02>;
#declare Knee = <0.30, -0.10, -0.025>;
#declare Tip = <0.76, -0.40, -0.005>;
#declare Cut = <0.78, -0.56, -0.005>;
#declare Bay = <0.42, -0.44, -0.02>;
#declare Foot = <0.16, -0.52, -0.02>;
#declare Crest = <0.16, -0.16, -0.085>;
#declare Crest2 = <0.74, -0.47, -0.02>;

#declare Ship = union {


// Hull
mesh {
    Facet(Nose, Cheek, Brow)
    Facet4(Cheek, Flank, Rib, Brow)
    Facet(Brow, Rib, Spine)
    Facet4(Flank, Hip, Haunch, Rib)
    Facet4(Rib, Haunch, Tail, Spine)
    Facet(Hip, Tail, Haunch)
    Metal(<0.86, 0.89, 0.94>, 0.22, 0.03)
}

// Wings: swept back, the tips cut, a ridge along each
mesh {
    Facet(Root, Knee, Crest)
    Facet4(Knee, Tip, Crest2, Crest)
    Facet(Tip, Cut, Crest2)
    Facet4(Cut, Bay, Crest, Crest2)
    Facet(Bay, Foot, Crest)
    Facet(Root, Crest, Foot)
    Metal(<0.60, 0.66, 0.76>, 0.18, 0.04)
}

// Stripes on the wings, dark, and the edges that catch the light
union {
    Bars(<0.22, -0.04, -0.075>, 0.013, <0.70, -0.405, -0.02>, 0.007)
    texture { pigment { srgb <0.10, 0.13, 0.20> } finish { diffuse 0.6 specular 0.3 } }
}
union {
    Bars(Root, 0.007, Knee, 0.008)
    Bars(Knee, 0.008, Tip, 0.009)
    Bars(Nose, 0.004, Cheek, 0.008)
    Bars(Cheek, 0.008, Flank, 0.008)
    Bar(Nose, 0.004, Brow, 0.008)
    texture { pigment { srgb <0.92, 0.96, 1.0> } finish { diffuse 0.9 emission 0.22 specular 0.8 roughness 0.02 } }
}

// Fins at the tips
union {
    Bars(<0.765, -0.22, -0.03>, 0.010, <0.775, -0.44, -0.06>, 0.030)
    Bars(<0.775, -0.44, -0.06>, 0.030, <0.770, -0.66, -0.03>, 0.012)
    Metal(<0.80, 0.85, 0.92>, 0.2, 0.03)
}
union {
    Bars(<0.768, -0.34, -0.085>, 0.010, <0.772, -0.52, -0.090>, 0.010)
    Glow(<0.75, 0.95, 1.0>, 1.2)
}

// Engines
union {
    Bars(<0.115, -0.16, -0.13>, 0.050, <0.115, -0.30, -0.13>, 0.078)
    Bars(<0.115, -0.30, -0.13>, 0.078, <0.115, -0.50, -0.11>, 0.072)
    Metal(<0.40, 0.45, 0.55>, 0.25, 0.03)
}
union {
    torus { 0.066, 0.017 translate <0.115, -0.545, -0.11> }
    torus { 0.066, 0.017 translate <-0.115, -0.545, -0.11> }
    torus { 0.080, 0.009 translate <0.115, -0.36, -0.125> }
    torus { 0.080, 0.009 translate <-0.115, -0.36, -0.125> }
    Metal(<0.75, 0.72, 0.68>, 0.3, 0.02)
}
union {
    sphere { <0.115, -0.56, -0.11>, 0.055 }
    sphere { <-0.115, -0.56, -0.11>, 0.055 }
    Glow(<1.0, 0.86, 0.55>, 1.5)
}

// Canopy
sphere {
    0, 1
    scale <0.058, 0.155, 0.07>
    translate <0, 0.20, -0.145>
    texture {
        pigment { srgb <0.03, 0.09, 0.15> }
        finish { diffuse 0.3 specular 1.0 roughness 0.006 reflection { 0.15, 0.55 } }
    }
}

// Intakes beside the spine, and panels that break up the wings
union {
    Bars(<0.085, 0.02, -0.165>, 0.004, <0.125, -0.13, -0.150>, 0.014)
    Bars(<0.30, -0.17, -0.066>, 0.006, <0.36, -0.36, -0.046>, 0.006)
    Bars(<0.46, -0.26, -0.052>, 0.005, <0.52, -0.42, -0.034>, 0.005)
    texture { pigment { srgb <0.05, 0.07, 0.12> } finish { diffuse 0.5 specular 0.2 } }
}
union {
    Bars(<0.045, 0.42, -0.095>, 0.006, <0.070, 0.24, -0.110>, 0.009)
    Glow(<0.55, 0.88, 1.0>, 0.9)
}
union {
    Bars(<0.20, -0.40, -0.075>, 0.008, <0.30, -0.40, -0.062>, 0.006)
    Glow(<1.0, 0.62, 0.25>, 0.9)
}

    scale 0.80
    translate 0.02 * y
}
object { Ship }
