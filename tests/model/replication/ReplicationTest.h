#pragma once

#include "model/IgmpHostDir.h"
#include "model/IgmpHostStatusDir.h"
#include "platform/kiv/Connection.h"
#include "platform/kiv/GenericIf.h"
#include "platform/kiv/nboattrlog/KivNboAttrLogSa.h"
#include "tests/support/SimulatedTest.h"
#include "tests/support/SocketPair.h"

namespace Igmp {

using Kiv::Connection;
using Zornet::IpAddr;

/// Everything that replication carries of an entity, as text: scalars by value, members by key.
std::string contents( Kiv::Entity const& entity );

/// A served model and a mirror of it in one process, over a pair of sockets.
class ReplicationTest : public Support::SimulatedTest {
  protected:
    struct Model {
        Ptr<IgmpHostDir> hosts = igmpHostDirFactory( "igmpHostDir" );
        Ptr<IgmpHostStatusDir> status = igmpHostStatusDirFactory( "igmpHostStatusDir" );

        std::vector<Connection::Mount> mounts( bool isWritable ) const {
            return { { "igmpHostDir", hosts, isWritable }, { "igmpHostStatusDir", status, false } };
        }
        IgmpHost& host( char const* name ) { return *hosts->igmpHostIs( name ); }
        std::string text() const { return contents( *hosts ) + contents( *status ); }
    };
    /// Both ends of one stream.
    struct Link {
        Link(
            Model const& served, Model const& mirror, bool isWritable = true,
            Ptr<Kiv::ActivityConfig> const& clientActivity = nullptr
        );
        void cut();

        Support::SocketPair sockets;
        Ptr<Connection> server;
        Ptr<Connection> client;
        std::string serverEnd;
        std::string clientEnd;
    };

    /// The adapter of an entity that is on one stream alone.
    static Kiv::Entity::KivNboAttrLogSa& adapterOf( Kiv::Entity& entity ) {
        return static_cast<Kiv::Entity::KivNboAttrLogSa&>( *entity.streamAdapter( []( auto& ) { return true; }
        ) );
    }
    /// Turns of the loop until everything that was written has been applied, or somebody has ended.
    static void exchange( Link& link );
    static void turns( unsigned count );
    /// The same, each behind a turn of a client that has an activity of its own.
    static void clientTurns( Ptr<Kiv::ActivityConfig> const& client, unsigned count );
    /// Moves every replicated scalar of an entity away from its default.
    static void fill( Kiv::Entity& entity );
    void expectSame( Model const& a, Model const& b ) { EXPECT_EQ( a.text(), b.text() ); }

    Model served_;
    Model mirror_;
};

} // namespace Igmp
