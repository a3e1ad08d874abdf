#include <boost/python.hpp>

#include <script/kxAnimScript.h>

#include <script/kxScriptBlocks.h>
#include <script/kxScriptChannels.h>
#include <script/kxScriptClips.h>
#include <script/kxScriptKeys.h>
#include <script/kxScriptPlaying.h>
#include <script/kxScriptTrash.h>

void kxAnimScript::registerFunctions()
{
    // Docstrings as they are written, without generated signatures.
    const boost::python::docstring_options docstrings(true, false);
    kxScriptChannels::defineKeying();
    kxScriptPlaying::define();
    kxScriptChannels::defineClipping();
    kxScriptTrash::define();
    kxScriptKeys::define();
    kxScriptBlocks::define();
    kxScriptClips::define();
}
