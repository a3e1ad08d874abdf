#pragma once

#include <kxExport.h>

#include <string>
#include <vector>

/// One step of a sequence.
struct KX_API kxSequenceStep
{
    enum class Kind
    {
        PlayClip,      ///< and wait for its end
        StartClip,     ///< and go on at once
        ShowViewpoint, ///< the view goes there
        SetVariant,    ///< `choice` empty: the next one
        Wait,          ///< `seconds`
        PlaySequence,  ///< and wait for its end
        RunPython      ///< `name` is the text
    };
    static constexpr int KindCount = 7;
    static constexpr double LongestWait = 86400; ///< seconds

    Kind kind = Kind::Wait;
    std::string name; ///< UTF-8: of the clip or block, the viewpoint, the variant set, the sequence; the Python text
    std::string choice;
    double seconds = 1;

    /// The word that stands for a kind in texts and scripts, as in "clip".
    static const char* word(Kind kind);
    /// False where no kind has this word.
    static bool kindOf(const std::string& word, Kind& kind);

    /// One line of JSON: the word and what belongs to it, as in ["variant","Door","Open"].
    std::string toText() const;
    /// False, and `step` stays, for anything that toText() doesn't write.
    static bool fromText(const std::string& text, kxSequenceStep& step);

    bool operator==(const kxSequenceStep& other) const { return toText() == other.toText(); }
};
