#pragma once

#include <QString>

#include <functional>
#include <optional>

class kxSceneryStage;
class kxScriptDocument;

/// The Python module `kxHost`: the application for scripts.
class kxHostModule
{
public:
    /// What scripts ask of the application's window. What isn't set, and a function that gives false, raises
    /// RuntimeError with the reason.
    struct Hooks
    {
        /// Draws the scene at the present frame into a picture file of `width` x `height` pixels.
        /// `camera` by name, empty for none; `isTransparent`: without a background.
        std::function<bool(const QString& file, int width, int height, const QString& camera, bool isTransparent,
                           QString& reason)>
            render;
        struct Movie
        {
            QString file;
            int width = 0, height = 0;
            QString clip;                   ///< by name, empty for the timeline
            std::optional<int> first, last; ///< frames, both included; else those of the whole range
            QString camera;                 ///< as of render
            bool isTransparent = false;     ///< as of render
        };
        /// Draws these frames into a movie file, and says how many it holds.
        std::function<bool(const Movie& movie, int& frames, QString& reason)> renderMovie;
        /// Saves a picture of the main window.
        std::function<bool(const QString& file, QString& reason)> screenshot;
        /// Shows viewpoints and runs sequences; not owned.
        kxSceneryStage* stage = nullptr;
        /// The open scene as a file; not owned.
        kxScriptDocument* document = nullptr;
    };

    /// Registers the module. To be called once, before the interpreter starts.
    static void install();
    static Hooks& hooks();
};
