// SPDX-License-Identifier: Apache-2.0
// Expected places come from expected_words.py.
#include "simulator/Geodesy.h"

#include <gtest/gtest.h>

#include <cmath>

namespace {

using namespace Simulator;

const double kDegree = std::atan(1.0) / 45.0;

TEST(Geodesy, PutsPlacesOnTheEllipsoid) {
    struct Case {
        Place place;
        EarthFixed expected;
    };
    const Case cases[] = {
        {{0, 0, 0}, {6378137.0, 0, 0}},
        {{90 * kDegree, 0, 10}, {0, 0, 6356752.314245 + 10}},
        {{54 * kDegree, 7.5 * kDegree, 30}, {3725089.061305, 490417.278656, 5136768.101939}},
        {{-33.5 * kDegree, -170.25 * kDegree, -12},
         {-5247159.167971, -901626.846637, -3500327.664779}}};
    for (const Case& entry : cases) {
        const EarthFixed position = earthFixed(entry.place);
        for (std::size_t axis = 0; axis < 3; ++axis) {
            EXPECT_NEAR(position[axis], entry.expected[axis], 2e-6);
        }
    }
}

TEST(Geodesy, SeesDirectionsFromNorthOverEastAndUpwards) {
    const Place here{54 * kDegree, 7.5 * kDegree, 30};
    const EarthFixed origin = earthFixed(here);
    const auto axes = localAxes(here);
    const auto seen = [&](double toEast, double toNorth, double upwards) {
        EarthFixed target = origin;
        for (std::size_t axis = 0; axis < 3; ++axis) {
            target[axis] +=
                toEast * axes[0][axis] + toNorth * axes[1][axis] + upwards * axes[2][axis];
        }
        EXPECT_NEAR(distanceBetween(origin, target), std::hypot(toEast, toNorth, upwards), 1e-6);
        return directionOf(here, target);
    };
    EXPECT_NEAR(seen(0, 1000, 0).azimuth, 0.0, 1e-9);
    EXPECT_NEAR(seen(1000, 0, 0).azimuth, 90 * kDegree, 1e-9);
    EXPECT_NEAR(seen(0, -1000, 0).azimuth, 180 * kDegree, 1e-9);
    EXPECT_NEAR(seen(-1000, 0, 0).azimuth, 270 * kDegree, 1e-9);
    EXPECT_NEAR(seen(3000, 4000, 5000).elevation, 45 * kDegree, 1e-9);
    EXPECT_NEAR(seen(0, 1000, -1000).elevation, -45 * kDegree, 1e-9);
    EXPECT_NEAR(seen(0, 0, 1000).elevation, 90 * kDegree, 1e-9);
}

TEST(Geodesy, UpIsWhereThePlaceGoesWithMoreAltitudeAndNorthWithMoreLatitude) {
    const Place here{54 * kDegree, 7.5 * kDegree, 30};
    EXPECT_NEAR(directionOf(here, earthFixed({here.latitude, here.longitude, 1030})).elevation,
                90 * kDegree, 1e-6);
    const Direction north =
        directionOf(here, earthFixed({here.latitude + 1e-6, here.longitude, here.altitude}));
    EXPECT_NEAR(std::remainder(north.azimuth, 360 * kDegree), 0.0, 1e-6);
    EXPECT_NEAR(north.elevation, 0.0, 1e-6);
}

}  // namespace
