#include "agent/expecting/JUnitReport.h"

#include <gmock/gmock.h>

#include <fstream>
#include <sstream>

#include "tests/agent/TemporaryFolder.h"
#include "tests/support/Namespace.h"

namespace Agent {

namespace {

/// What a parser of XML says of the report: "NAME TIME" for each case, with the failure behind it.
std::string
parsed( std::vector<ExpectationOutcome> const& outcomes ) {
    TemporaryFolder const folder;
    std::ostringstream text;
    writeJUnit( text, outcomes, 12.5 );
    std::string const report = folder.fileWith( "report.xml", text.str() );
    std::string const program = folder.fileWith(
        "parse.py", "import sys, xml.etree.ElementTree as tree\n"
                    "suite = tree.parse(sys.argv[1]).getroot().find('testsuite')\n"
                    "print(suite.get('tests'), suite.get('failures'), suite.get('time'))\n"
                    "for case in suite:\n"
                    "    print(ascii(case.get('name')), case.get('classname'), case.get('time'))\n"
                    "    for failure in case:\n"
                    "        print(ascii(failure.get('message')), ascii(failure.text))\n"
    );
    return Support::outputOf( "python3 " + program + " " + report );
}

TEST( JUnitReport, HasACaseForEachOutcome ) {
    EXPECT_EQ(
        parsed( { { "line 4", "s.yaml", 3.5, {} },
                  { "late", "s.yaml", 10.0, { "a: found 1", "b: found 2" } } } ),
        "2 1 12.5\n"
        "'line 4' s.yaml 3.5\n"
        "'late' s.yaml 10\n"
        "'a: found 1' 'a: found 1\\nb: found 2\\n'\n"
    );
}

TEST( JUnitReport, HoldsWhatXmlCannotSpell ) {
    EXPECT_EQ(
        parsed( { { "<&\">'\t\x01\xff\xc3\xa4", "s.yaml", 0.0, { "]]>\n<x>" } } } ),
        "1 1 12.5\n"
        "'<&\">\\'\\t\\ufffd\\ufffd\\xe4' s.yaml 0\n"
        "']]>\\n<x>' ']]>\\n<x>\\n'\n"
    );
}

} // namespace

} // namespace Agent
