#include "agent/control/ctl/Ctl.h"

#include "agent/command/Options.h"
#include "agent/command/Verb.h"
#include "agent/control/SocketPath.h"
#include "agent/scenario/Scenario.h"

namespace Agent {

namespace {

using Action = void ( * )( CtlOptions const& );

/// Adds the verbs, each with the options that it takes.
class CtlVerbs {
  public:
    explicit CtlVerbs( CLI::App& app )
        : app_( *app.add_subcommand( "ctl", "Look at the hosts of a running agent and change them" ) ) {}

    Verb add();

  private:
    CLI::App& verb( char const* name, char const* help, Action action );
    void addPath();
    void addReading();
    void addSetting();
    void addAdding();
    void addGroups();
    void addWatch();
    CLI::Option* hostOption( CLI::App& command, char const* help );
    void addForce( CLI::App& command );
    void addSources( CLI::App& command );

    CLI::App& app_;
    std::shared_ptr<CtlOptions> options_ = std::make_shared<CtlOptions>();
    std::shared_ptr<Action> action_ = std::make_shared<Action>( nullptr );
};

Verb
CtlVerbs::add() {
    addPath();
    addReading();
    addSetting();
    addAdding();
    addGroups();
    addWatch();
    app_.require_subcommand( 1 );
    app_.footer( "HOST is a name or a pattern such as 'rx-*'. A command returns when the agent has applied "
                 "it: 0 done, "
                 "1 failed, 2 wrong usage or refused (nothing was changed)." );
    return { &app_, [options = options_, action = action_] { return ctl( *action, *options ); } };
}

void
CtlVerbs::addPath() {
    CLI::Option const* const path =
        app_.add_option( "PATH", options_->path, "The socket of the agent, as given to run --control" )
            ->check( socketPath );
    app_.final_callback( [path] { // where it were required() a verb would be taken for it, also before --help
        if ( path->empty() ) {
            throw CLI::RequiredError( "PATH" );
        }
    } );
    addParsed(
        app_, "--timeout", options_->patience, durationOf, "S",
        "Give up when nothing has come from the agent for so many seconds [30]"
    );
}

CLI::App&
CtlVerbs::verb( char const* name, char const* help, Action action ) {
    CLI::App& command = *app_.add_subcommand( name, help );
    command.add_flag( "--json", options_->isJson, "Print JSON" );
    command.callback( [target = action_, action] { *target = action; } );
    return command;
}

CLI::Option*
CtlVerbs::hostOption( CLI::App& command, char const* help ) {
    return command.add_option( "HOST", options_->host, help );
}

void
CtlVerbs::addForce( CLI::App& command ) {
    command.add_flag( "--force", options_->isForced, "Do it even where it may end the agent's process" );
}

void
CtlVerbs::addReading() {
    hostOption( verb( "hosts", "List the hosts", &ctlHosts ), "Only these hosts" );
    hostOption( verb( "show", "Print everything that is known of hosts", &ctlShow ), "These hosts" )
        ->required();
    CLI::App& get = verb( "get", "Print attributes of hosts", &ctlGet );
    hostOption( get, "Of these hosts" )->required();
    get.add_option(
           "ATTR", options_->words,
           "Attributes of the host, or of its status: those named alike are status.ATTR there"
    )
        ->required();
}

void
CtlVerbs::addSetting() {
    CLI::App& set = verb(
        "set", "Set attributes of hosts, and raise the generation counters with which they take effect",
        &ctlSet
    );
    hostOption( set, "On these hosts" )->required();
    set.add_option( "ATTR=VALUE", options_->words, "Attributes and values" )->required();
    addForce( set );
}

void
CtlVerbs::addAdding() {
    CLI::App& add = verb( "add", "Add hosts and start them", &ctlAdd );
    add.add_option( "NAME", options_->host, "Name of the host, or the first part of the names of several" )
        ->required();
    add.add_option(
        "ATTR=VALUE", options_->words, "Attributes and values; vlanStep steps the VLAN from host to host"
    );
    addWhole<U32>(
        add, "--count", options_->count,
        "Number of hosts: NAME-1, NAME-2 and so on, with ipAddr and macAddr one further from host to host", 1,
        mostHosts
    );
    add.add_option( "--group", options_->groups, "Groups that each joins: an address or a range; repeatable" )
        ->type_name( "GROUP" )
        ->allow_extra_args( false );
    addSources( add );
    add.add_flag(
        "--update", options_->isUpdate, "Take hosts that are there already too; what is not given stays"
    );
    addForce( add );
    CLI::App& del = verb( "delete", "Delete hosts; they fall silent, without a leave", &ctlDelete );
    del.add_option( "HOST", options_->words, "These hosts" )->required();
}

void
CtlVerbs::addSources( CLI::App& command ) {
    using Words = std::vector<std::string>;
    auto const includedIs = [options = options_]( Words const& sources ) { options->included = sources; };
    auto const excludedIs = [options = options_]( Words const& sources ) { options->excluded = sources; };
    CLI::Option* const include =
        command
            .add_option_function<Words>( "--include", includedIs, "Take the group from these sources alone" )
            ->delimiter( ',' )
            ->type_name( "SOURCE,..." );
    command
        .add_option_function<Words>( "--exclude", excludedIs, "Take the group from all sources but these" )
        ->delimiter( ',' )
        ->type_name( "SOURCE,..." )
        ->excludes( include );
}

void
CtlVerbs::addGroups() {
    CLI::App& join = verb( "join", "Join groups, or change the sources of joined groups", &ctlJoin );
    hostOption( join, "With these hosts" )->required();
    join.add_option( "GROUP", options_->words, "Addresses, or ranges such as 239.1.0.0/24" )->required();
    addSources( join );
    addForce( join );
    CLI::App& leave = verb( "leave", "Leave groups", &ctlLeave );
    hostOption( leave, "With these hosts" )->required();
    leave.add_option( "GROUP", options_->words, "Addresses, ranges such as 239.1.0.0/24, or patterns" )
        ->required();
    addForce( leave );
}

void
CtlVerbs::addWatch() {
    CLI::App& watch = verb( "watch", "Print each change of hosts and their status as it comes", &ctlWatch );
    hostOption( watch, "Only these hosts" );
    addWhole<U64>( watch, "--count", options_->changes, "End after so many changes", 1 );
    addParsed( watch, "--duration", options_->duration, durationOf, "S", "End after so many seconds" );
}

} // namespace

Verb
addCtl( CLI::App& app ) {
    return CtlVerbs( app ).add();
}

} // namespace Agent
