#pragma once

#include "tests/model/replication/ReplicationTest.h"

namespace Igmp {

/// A peer that writes what it likes.
class RawPeer {
  public:
    using Bytes = std::vector<U8>;
    using MsgHeader = Kiv::NboAttrLog::MsgHeader;
    using Operation = Kiv::NboAttrLog::Operation;
    using Out = Kiv::NboAttrLog::Out;

    static Bytes greeting( bool isClient, U8 version = 1 ) {
        return { 'K', 'i', 'v', 'N', 'b', 'o', '\r', '\n', 0, version, static_cast<U8>( isClient ), 0 };
    }
    static Bytes frame( U32 number, Bytes const& content, U32 acknowledged = 0 ) {
        Out out;
        out.nextU32Is( static_cast<U32>( content.size() ) );
        out.nextU32Is( number );
        out.nextU32Is( acknowledged );
        out.nextBytesIs( content );
        return { out.bytes().begin(), out.bytes().end() };
    }
    template <class Write>
    static Bytes message(
        Kiv::NboAttrLog::EntityId entity, Kiv::AttributeId attribute, Operation operation, Write write
    ) {
        Out out;
        MsgHeader header;
        header.entity = entity;
        header.attribute = attribute;
        header.operation = operation;
        Out::Record record( out, header );
        write( out );
        record.finish();
        return { out.bytes().begin(), out.bytes().end() };
    }
    static Bytes mount( char const* name ) {
        return message( {}, 0, Operation::mount, [&]( Out& out ) { out.nextStringIs( name ); } );
    }
};

inline RawPeer::Bytes
operator+( RawPeer::Bytes a, RawPeer::Bytes const& b ) {
    a.insert( a.end(), b.begin(), b.end() );
    return a;
}

} // namespace Igmp
