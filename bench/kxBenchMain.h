#pragma once

#include <scene/kxScene.h>

#include <benchmark/benchmark.h>

#include <QApplication>

/// The main() of each benchmark: without a display, and with an empty scene at its end. `prepare` runs first, and ends
/// all where it gives false.
template <class Prepare>
int kxBenchMain(int argc, char** argv, Prepare prepare)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QApplication application(argc, argv);
    if (!prepare())
        return 1;
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
    kxScene::the()->clear();
    return 0;
}

inline int kxBenchMain(int argc, char** argv)
{
    return kxBenchMain(argc, argv, [] { return true; });
}
