#include <script/kxScriptDoc.h>

kxScriptDoc::kxScriptDoc(const char* summary, std::initializer_list<Parameter> parameters) : _text(summary)
{
    for (const Parameter& parameter : parameters)
    {
        _text.append("\n\n@param ").append(parameter.name).append(": ").append(parameter.text);
        _text.append("\n\n@type ").append(parameter.name).append(": ").append(parameter.type);
    }
}

kxScriptDoc& kxScriptDoc::returns(const char* text, const char* type)
{
    _text.append("\n\n@return: ").append(text).append("\n\n@rtype: ").append(type);
    return *this;
}
