#include "agent/traffic/Traffic.h"

#include "platform/zornet/device/Device.h"

namespace Agent {

using Zornet::Device;
using Zornet::U64;
using Zornet::U8;

DeviceTraffic&
DeviceTraffic::operator+=( DeviceTraffic const& other ) {
    received += other.received;
    sent += other.sent;
    receiveLosses += other.receiveLosses;
    sendLosses += other.sendLosses;
    return *this;
}

Traffic::Traffic() {
    Zornet::frameTapIs( this );
}

Traffic::~Traffic() {
    Zornet::frameTapIs( nullptr );
}

std::map<std::string, DeviceTraffic>
Traffic::devices() const {
    std::map<std::string, DeviceTraffic> devices;
    for ( auto const& [device, traffic] : devices_ ) {
        devices[deviceLabel( device->ns(), device->name() )] += traffic;
    }
    return devices;
}

void
Traffic::handleReceived( Device const& device, std::span<U8 const> frame ) {
    ++devices_[&device].received;
    if ( listener_ ) {
        listener_->handleFrame( device, frame );
    }
}

void
Traffic::handleSent( Device const& device, std::span<U8 const> frame ) {
    ++devices_[&device].sent;
    if ( listener_ ) {
        listener_->handleFrame( device, frame );
    }
}

void
Traffic::handleReceiveLosses( Device const& device, U64 frames ) {
    devices_[&device].receiveLosses += frames;
}

void
Traffic::handleSendLosses( Device const& device, U64 frames ) {
    devices_[&device].sendLosses += frames;
}

std::string
deviceLabel( Zornet::NamespaceName const& ns, Kiv::String8 const& device ) {
    std::string const name( device.view() );
    return ns.empty() ? name : std::string( ns.name().view() ) + "/" + name;
}

} // namespace Agent
