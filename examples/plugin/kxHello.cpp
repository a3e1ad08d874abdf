#include <kxLog.h>
#include <kxMessage.h>
#include <kxModuleBase.h>

#include <osg/Node.h>

// The least that the application takes for its animation plug-in: three functions with C names, and a module that gets
// the messages it asks for.

namespace
{
constexpr std::uint64_t AllMessages = ~std::uint64_t(0);

class Hello : public kxModuleBase
{
public:
    Hello() : kxModuleBase(QStringLiteral("Hello"), QStringLiteral("Example"), AllMessages, nullptr) {}
    int receivedMessage(kxMessage&) override
    {
        if (_messages++ == 0)
            kxLog::info(QStringLiteral("Hello hears of the scene."));
        return 0;
    }

private:
    int _messages = 0;
};
} // namespace

extern "C"
{
    KX_API const char* getPluginVersion()
    {
        return "1.0 of the example";
    }

    KX_API void initPreferencesPlugin() {}

    KX_API void initPlugin()
    {
        static Hello module;
        kxLog::info(QStringLiteral("Hello is there."));
    }
}
