#include <animation/kxAnimEngine.h>

#include <animation/kxAnimManagerPrivate.h>

kxAnimEngine::kxAnimEngine() : plan(*this), programs(*this), film(*this), queue(*this) {}

kxAnimEngine::~kxAnimEngine() = default;

kxAnimEngine& kxAnimEngine::of(kxAnimManager& manager)
{
    return manager._p->engine;
}

void kxAnimEngine::clear()
{
    queue.dequeueAll();
    triggers.clear();
    rest.clear();
    plan.clear();
    programs.clear();
    film.clear();
}
