#include "agent/run/Run.h"

#include "agent/command/Options.h"
#include "agent/command/Verb.h"

namespace Agent {

namespace {

/// "500", "500k", "10M", "1G"; a k is 1024. It must hold at least what a capture begins with.
U64
captureLimitOf( std::string text ) {
    std::string const given = text;
    try {
        CLI::AsSizeValue const units( false );
        if ( units( text ).empty() ) {
            return wholeNumberOf( text, captureHeaderBytes );
        }
    } catch ( std::exception const& ) {
    }
    Kiv::throwExpected(
        "a number of bytes, " + std::to_string( captureHeaderBytes ) +
            " for the header of the file or more, such as 500k, 10M or 1G",
        given
    );
}

LogFormat
logFormatOf( std::string const& text ) {
    if ( text != "text" && text != "json" ) {
        Kiv::throwExpected( "text or json", text );
    }
    return text == "json" ? LogFormat::json : LogFormat::text;
}

void
addCapture( CLI::App& command, RunOptions& options ) {
    CLI::Option* const capture =
        command
            .add_option(
                "--pcap", options.captureFile,
                "Capture what the hosts' devices send and receive, for packet analysers; - for the standard "
                "output"
            )
            ->type_name( "FILE" );
    addParsed(
        command, "--pcap-limit", options.captureLimit, captureLimitOf, "BYTES",
        "End the capture before the file is longer; as in 500k, 10M, 1G"
    )
        ->needs( capture );
}

void
addTelling( CLI::App& command, RunOptions& options ) {
    addParsed(
        command, "--status-interval", options.statusInterval, durationOf, "S",
        "Every S seconds and at the end, write what all hosts and devices have counted, as a line of JSON, "
        "to "
        "the standard output"
    );
    command.add_flag( "--quiet", options.quiet, "Tell of errors and warnings only" );
    addParsed(
        command, "--log-format", options.logFormat, logFormatOf, "text|json",
        "Form of what is told on the standard error [text]"
    );
}

void
addMetrics( CLI::App& command, RunOptions& options ) {
    CLI::Option* const metrics = addParsed(
        command, "--metrics", options.metrics, metricsAddressOf, "[ADDR]:PORT",
        "Serve Prometheus metrics there, at /metrics; without ADDR on the loopback alone"
    );
    command
        .add_flag(
            "--metrics-per-host", options.metricsPerHost, "Among the metrics, tell the status of every host"
        )
        ->needs( metrics );
}

void
addExpecting( CLI::App& command, RunOptions& options ) {
    command
        .add_option(
            "--junit", options.junitFile,
            "Write what became of the scenario's expectations, as JUnit XML; - for the standard output"
        )
        ->type_name( "FILE" );
    command.add_flag(
        "--simulate", options.simulate,
        "Use no device: a wire in memory with queriers, and time that jumps to what happens next"
    );
}

void
addShare( CLI::App& command, RunOptions& options ) {
    addParsed(
        command, "--shard", options.shard, shardOf, "K/N",
        "Run every N-th host alone, from the K-th on; N processes run the scenario between them"
    );
    addWhole<U64>(
        command, "--seed", options.seed,
        "Draw what the timeline leaves to chance from this number; the same number, the same run", 0
    );
}

/// Hosts come from a scenario or through the control socket; without either there would never be any.
void
addControl( CLI::App& command, RunOptions& options, CLI::Option const& scenario ) {
    CLI::Option const* const control =
        command
            .add_option(
                "--control", options.controlPath,
                "Make a socket there through which igmphost ctl of the same user looks at the hosts and "
                "changes them"
            )
            ->check( socketPath )
            ->excludes( command.get_option( "--simulate" ) )
            ->type_name( "PATH" );
    command.final_callback( [&scenario, control] {
        if ( scenario.empty() && control->empty() ) {
            throw CLI::RequiredError( "SCENARIO" );
        }
    } );
}

} // namespace

Verb
addRun( CLI::App& app ) {
    auto const options = std::make_shared<RunOptions>();
    CLI::App& command = *app.add_subcommand( "run", "Run the hosts of a scenario on this machine's devices" );
    CLI::Option const* const scenario =
        command
            .add_option(
                "SCENARIO", options->scenarioFiles,
                "Files, YAML or JSON, that describe the hosts; none is needed with --control"
            )
            ->type_name( "FILE" );
    addParsed( command, "--duration", options->duration, durationOf, "S", "End after so many seconds" );
    command
        .add_option(
            "--status", options->statusFile,
            "Write what every host has counted, as JSON, at the end and on SIGUSR1; - for the standard output"
        )
        ->type_name( "FILE" );
    addTelling( command, *options );
    addMetrics( command, *options );
    addCapture( command, *options );
    addShare( command, *options );
    addExpecting( command, *options );
    command.add_flag(
        "--wait-for-device", options->waitForDevice,
        "Begin although a device or its namespace is missing, and take it up when it appears"
    );
    command.add_flag(
        "--leave-on-exit", options->leaveOnExit,
        "Leave every group at the end, and wait until the network has been told; a second Ctrl-C ends at once"
    );
    addControl( command, *options, *scenario );
    addTraces( command, options->traces );
    return { &command, [options] { return run( *options ); } };
}

} // namespace Agent
