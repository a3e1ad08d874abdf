#pragma once

#include <QtGlobal>

#include <random>

/// Where a random walk begins: KX_SEED, or another each time.
inline unsigned kxSeed()
{
    bool isGiven = false;
    const int given = qEnvironmentVariableIntValue("KX_SEED", &isGiven);
    return isGiven ? unsigned(given) : unsigned(std::random_device()());
}
