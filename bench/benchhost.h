#pragma once

#include "blackbox/loadedplugin.h"

#include <QGuiApplication>

#include <glog/logging.h>

/// What a bench of the plug-in stands on: an application without a screen, and the plug-in loaded as a station loads
/// it.
class BenchHost
{
public:
    /// `argc` and `argv` are those of main() and outlive it.
    BenchHost(int& argc, char** argv)
        : application(quietened(argc), argv)
    {
    }

    /// Its root is null when it could not be loaded.
    const LoadedPlugin& plugin() const { return loaded; }

private:
    /// Before the application is made: a figure should not depend on the screen, nor on where the log goes.
    static int& quietened(int& argc)
    {
        qputenv("QT_QPA_PLATFORM", "offscreen");
        FLAGS_minloglevel = google::GLOG_WARNING;
        return argc;
    }

    QGuiApplication application;
    LoadedPlugin loaded;
};
