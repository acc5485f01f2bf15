#include "codec/engine_world.h"

namespace kestrelon {

EngineWorld::EngineWorld(const Setup& setup)
    : m_port(setup.port)
    , m_codec(makeRowCodec(setup.programFolder, setup.port, m_window, setup.codec))
    , m_broken(setup.configFolder)
    , m_environment{setup.session, setup.registry,      setup.bodies,  *m_codec,
                    setup.port,    setup.programFolder, setup.quality, &m_broken}
{}

EngineWorld::~EngineWorld()
{
    m_codec->releaseAlgorithm();
    keepBrokenCodecs(m_broken, m_port);
}

} // namespace kestrelon
