#include "agent/command/CommandLine.h"

int
main( int argc, char** argv ) {
    return Agent::commandLine( argc, argv );
}
