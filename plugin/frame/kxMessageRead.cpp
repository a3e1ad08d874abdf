#include <frame/kxMessageRead.h>

#include <kxAnimRecords.h>

#include <QString>

#include <cstdio>
#include <cstring>
#include <set>
#include <typeinfo>
#include <vector>

template <class T>
bool getFromMessage(const kxMessage& message, const std::string& key, T& out, const char* reader)
{
    const boost::any value = message.get(key);
    if (value.empty())
        return false;
    // Names, not addresses: the value may come from another library.
    const char* const stored = value.type().name();
    const char* const wanted = typeid(T).name();
    if (std::strcmp(stored, wanted) == 0)
    {
        out = *boost::unsafe_any_cast<T>(&value);
        return true;
    }
    std::fprintf(stderr, "%s : Attribute '%s' has wrong type (is:'%s' != req:'%s')!\n", reader, key.c_str(), stored,
                 wanted);
    kxMessage::printBT();
    return false;
}

template bool getFromMessage(const kxMessage&, const std::string&, bool&, const char*);
template bool getFromMessage(const kxMessage&, const std::string&, int&, const char*);
template bool getFromMessage(const kxMessage&, const std::string&, unsigned int&, const char*);
template bool getFromMessage(const kxMessage&, const std::string&, double&, const char*);
template bool getFromMessage(const kxMessage&, const std::string&, std::string&, const char*);
template bool getFromMessage(const kxMessage&, const std::string&, void*&, const char*);
template bool getFromMessage(const kxMessage&, const std::string&, osg::NodePtr&, const char*);
template bool getFromMessage(const kxMessage&, const std::string&, osg::AnimNodePtr&, const char*);
template bool getFromMessage(const kxMessage&, const std::string&, std::vector<osg::NodePtr>&, const char*);
template bool getFromMessage(const kxMessage&, const std::string&, std::vector<osg::AnimNodePtr>&, const char*);
template bool getFromMessage(const kxMessage&, const std::string&, std::vector<osg::MaterialPtr>&, const char*);
template bool getFromMessage(const kxMessage&, const std::string&, std::set<QString>&, const char*);
