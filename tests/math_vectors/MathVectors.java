// SPDX-FileCopyrightText: The Quorvane project
// SPDX-License-Identifier: MIT

// Writes vectors.tsv, the hard arguments that fdlibm_test.cpp checks: Java's StrictMath is defined
// as the results of fdlibm 5.3, bit for bit, on every platform, and comes from other hands than our
// routines. One case a line, everything as raw bits in hexadecimal; a NaN result reads "nan".
//
//   java MathVectors.java > vectors.tsv

import java.util.ArrayList;
import java.util.LinkedHashSet;
import java.util.List;
import java.util.Set;
import java.util.SplittableRandom;

public class MathVectors {
    static final SplittableRandom random = new SplittableRandom(20051953);
    static final double PI_2 = Math.PI / 2;
    static final double[] SPECIAL = {
        0.0, Double.MIN_VALUE, Double.MIN_NORMAL, 1e-300, 1.0, Math.PI, 1e300, Double.MAX_VALUE,
        Double.POSITIVE_INFINITY, Double.NaN};

    static String bits(double x) {
        return Double.isNaN(x) ? "nan" : String.format("%016x", Double.doubleToRawLongBits(x));
    }

    static String raw(double x) { return String.format("%016x", Double.doubleToRawLongBits(x)); }

    static double between(double low, double high) {
        return low + (high - low) * random.nextDouble();
    }

    // A random sign and fraction with a power of two from the range.
    static double scaled(int lowest, int highest) {
        double fraction = (random.nextBoolean() ? 1 : -1) * (1 + random.nextDouble());
        return Math.scalb(fraction, random.nextInt(lowest, highest + 1));
    }

    // The value, `steps` representable neighbours on each side, and all of them negated.
    static void around(Set<Long> out, double x, int steps) {
        long middle = Double.doubleToRawLongBits(x);
        for (long i = -steps; i <= steps; ++i) {
            double neighbour = Double.longBitsToDouble(middle + i);
            if (middle + i >= 0) {
                out.add(Double.doubleToRawLongBits(neighbour));
                out.add(Double.doubleToRawLongBits(-neighbour));
            }
        }
    }

    static Set<Long> angles() {
        Set<Long> out = new LinkedHashSet<>();
        for (double x : SPECIAL) {
            around(out, x, 1);
        }
        // Where the routines change their method: tiny arguments, the kernels' polynomial splits,
        // the first reductions, the end of the table of multiples and of the medium range.
        int[] highWords = {0x3e400000, 0x3e500000, 0x3fd33333, 0x3fe59428, 0x3fe90000, 0x3fe921fb,
            0x4002d97c, 0x413921fb};
        for (int high : highWords) {
            around(out, Double.longBitsToDouble((long) high << 32), 1);
            around(out, Double.longBitsToDouble(((long) high << 32) + (1L << 32)), 1);
        }
        for (int k = 1; k <= 40; ++k) {  // multiples of pi/2, of which 32 have a table entry
            around(out, k * PI_2, 1);
            around(out, k * PI_2 / 2, 0);
        }
        for (int exponent = 6; exponent <= 40; ++exponent) {  // far multiples, past 2^20 pi/2
            around(out, (Math.scalb(1.0, exponent) + random.nextInt(64)) * PI_2, 1);
        }
        for (int exponent = 21; exponent < 1024; exponent += 9) {  // up to the largest doubles
            around(out, Math.scalb(1 + random.nextDouble(), exponent), 0);
        }
        // The double nearest to any multiple of pi/2: most bits of the reduction cancel.
        around(out, 0x1.6ac5b262ca1ffp849, 1);
        for (double limit : new double[] {Math.PI / 4, Math.PI, 20, 1e4, 1.6e6, 1e7, 1e15}) {
            for (int i = 0; i < 130; ++i) {
                out.add(Double.doubleToRawLongBits(between(-limit, limit)));
            }
        }
        for (int i = 0; i < 100; ++i) {
            out.add(Double.doubleToRawLongBits(scaled(-1022, -20)));
            out.add(Double.doubleToRawLongBits(scaled(50, 1023)));
        }
        return out;
    }

    static void atan2(double y, double x) {
        System.out.println("atan2 " + raw(y) + " " + raw(x) + " " + bits(StrictMath.atan2(y, x)));
    }

    static Set<Long> squares() {
        Set<Long> out = new LinkedHashSet<>();
        for (double x : SPECIAL) {
            around(out, x, 1);
        }
        for (int i = 0; i < 40; ++i) {
            double root = random.nextInt(1, 1 << 26);
            around(out, root * root, 1);
            out.add(random.nextLong(1L << 52));  // subnormal
            out.add(Double.doubleToRawLongBits(Math.abs(scaled(-1022, 1023))));
            out.add(Double.doubleToRawLongBits(between(0, 450)));  // squared distances of a game
        }
        return out;
    }

    public static void main(String[] arguments) {
        for (long argument : angles()) {
            double x = Double.longBitsToDouble(argument);
            System.out.println("sin " + raw(x) + " " + bits(StrictMath.sin(x)));
            System.out.println("cos " + raw(x) + " " + bits(StrictMath.cos(x)));
        }
        List<Double> signed = new ArrayList<>();
        for (double x : SPECIAL) {
            signed.add(x);
            signed.add(-x);
        }
        for (double y : signed) {
            for (double x : signed) {
                atan2(y, x);
            }
        }
        // Quotients at which the arc tangent changes its formula, and exponents 60 apart and more.
        for (double quotient : new double[] {7.0 / 16, 11.0 / 16, 1, 19.0 / 16, 39.0 / 16,
                 0x1p-29, 0x1p60, 0x1p61, 0x1p66, 0x1p-60, 0x1p-61}) {
            for (long step = -2; step <= 2; ++step) {
                double y = Double.longBitsToDouble(Double.doubleToRawLongBits(quotient) + step);
                atan2(y, 1);
                atan2(-y, -1);
                atan2(y * 3, 3);
            }
        }
        for (int i = 0; i < 700; ++i) {
            atan2(between(-20, 20), between(-20, 20));
            atan2(scaled(-70, 70), scaled(-5, 5));
        }
        for (long argument : squares()) {
            double x = Double.longBitsToDouble(argument);
            System.out.println("sqrt " + raw(x) + " " + bits(StrictMath.sqrt(x)));
        }
    }
}
