#pragma once

#include <array>
#include <map>
#include <string>
#include <unordered_map>

#include "agent/run/Emulation.h"

namespace Agent {

/// The books of a run: what the status of every host has counted, by device, kept beyond the end of a host's
/// status, which every disabling of the host brings, and beyond the wrap of its 32-bit counters.
class StatusLedger {
  public:
    /// The attributes of a host's status that count, in the order of its table.
    using CounterRows = std::vector<Kiv::Attribute const*>;
    static CounterRows const& counterRows();

    struct Account {
        std::vector<Kiv::U64> counters = std::vector<Kiv::U64>( counterRows().size() ); ///< as counterRows()
        // At the last balance.
        Kiv::U64 hosts = 0;                       ///< that are enabled
        std::array<Kiv::U64, 4> hostsByVersion{}; ///< of those, by the version in force
        Kiv::U64 groups = 0;                      ///< of those, over all

        /// The counter of that attribute.
        Kiv::U64 counter( Kiv::AttributeId id ) const;
        Kiv::U64 reportsSent() const;
        Kiv::U64 messagesSent() const; ///< reports and leaves
        Kiv::U64 queriesHeard() const;
        Account& operator+=( Account const& other );
    };
    using Accounts = std::map<std::string, Account>;

    /// Watches the hosts, which must outlive it.
    explicit StatusLedger( Emulation const& emulation );
    ~StatusLedger();
    StatusLedger( StatusLedger const& ) = delete;
    StatusLedger& operator=( StatusLedger const& ) = delete;

    /// Brings the books up to date, which takes a time linear in the hosts, and returns them, an account for
    /// each device by deviceLabel().
    Accounts const& balance();
    /// The accounts of the last balance taken together.
    Account total() const;
    /// The deviceLabel() of the host's device.
    static std::string labelOf( Igmp::IgmpHost const& host );

  private:
    class DirWatch;
    /// What is known of a host that is enabled.
    struct Entry {
        Kiv::Ptr<Igmp::IgmpHostStatus> status;
        Kiv::Ptr<Igmp::IgmpHost> host;
        std::vector<Kiv::U32> counted; ///< what stands in the books already
        Kiv::U32 intfConfigVersion = 0;
        Account* account = nullptr; ///< of the device that the host is on
    };

    void handleStatus( Kiv::Name const& name );
    void book( Entry& entry );

    Emulation const& emulation_;
    Accounts accounts_;
    std::unordered_map<std::string, Entry> entries_;
    Kiv::Ptr<DirWatch> watch_;
};

} // namespace Agent
