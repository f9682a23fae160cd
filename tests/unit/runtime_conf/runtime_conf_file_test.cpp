#include "runtime_conf/runtime_conf_file.h"

#include <cerrno>
#include <gtest/gtest.h>
#include <string>
#include <unistd.h>
#include <vector>

#include "support/call_fault.h"
#include "unit/runtime_conf/conf_file_fixture.h"

namespace tavek {

namespace {

using test::Reports;
using Entries = std::vector<std::string>;

class RuntimeConfFile : public test::ConfFileFixture {};

Reports no_space(const std::string& line) {
  return {{12, "Invalid variable definition " + line + "\nExpected a space after variable name\n"}};
}
Reports no_value(const std::string& line) {
  return {{12, "Invalid variable definition " + line + "\nExpected a value"}};
}

TEST_F(RuntimeConfFile, GivesASortedStore) {
  EXPECT_EQ(read("B 1\nC 2\nA 3\n"), 0);
  EXPECT_NE(store->sorted, 0);
  EXPECT_EQ(entries(), (Entries{"A=3", "B=1", "C=2"}));
  EXPECT_EQ(take_reports(), Reports{});
}

TEST_F(RuntimeConfFile, MayBeEmpty) {
  EXPECT_EQ(read(""), 0);
  EXPECT_EQ(store->capacity, 20U);
  EXPECT_EQ(store->count, 0U);
}

// A file is given the lowest descriptor that is free.
int lowest_free_descriptor() {
  const int fd = dup(STDERR_FILENO);
  close(fd);
  return fd;
}

TEST_F(RuntimeConfFile, LeavesNoDescriptorOpen) {
  const int before = lowest_free_descriptor();
  EXPECT_EQ(read("A 1\n"), 0);
  EXPECT_EQ(lowest_free_descriptor(), before);
}

TEST_F(RuntimeConfFile, LetsTheLaterDefinitionWin) {
  EXPECT_EQ(read("KEY first\nOTHER x\nKEY second\n"), 0);
  EXPECT_EQ(entries(), (Entries{"KEY=second", "OTHER=x"}));
}

TEST_F(RuntimeConfFile, GrowsTheStoreWithItsLines) {
  std::string content;
  for (int i = 0; i < 30; ++i) {
    content += numbered(29 - i) + " " + std::to_string(29 - i) + "\n";
  }
  EXPECT_EQ(read(content), 0);
  EXPECT_EQ(store->capacity, 40U);
  EXPECT_EQ(store->count, 30U);
  EXPECT_EQ(found("N000"), "0");
  EXPECT_EQ(found("N029"), "29");
}

TEST_F(RuntimeConfFile, IgnoresBlankLinesAndComments) {
  EXPECT_EQ(read("\n   \n\t\n \v\f\r\n# KEY a\n  # comment\n#\n#KEY b\n"), 0);
  EXPECT_EQ(entries(), Entries{});
  EXPECT_EQ(take_reports(), Reports{});
}

TEST_F(RuntimeConfFile, TakesLettersDigitsAndUnderscoresAsAName) {
  EXPECT_EQ(read("_a 1\n9 2\nZz_09 3\n"), 0);
  EXPECT_EQ(entries(), (Entries{"9=2", "Zz_09=3", "_a=1"}));
}

TEST_F(RuntimeConfFile, SkipsALineWhoseNameIsNotFollowedBySpace) {
  for (const std::string line :
       {"KEY=/srv\n", "KEY#\n", "KEY# note\n", "KEY-D v\n", "KEY.v\n", "KEY", "KEY\xc3\xa9 v\n"}) {
    EXPECT_EQ(value_of(line), "(unset)") << line;
    EXPECT_EQ(take_reports(), no_space(line));
  }
}

TEST_F(RuntimeConfFile, SkipsALineThatBeginsWithNoName) {
  for (const std::string line : {"=KEY v\n", "-\n", "$KEY v\n", "\xc3\xa9 v\n", "\"KEY\" v"}) {
    EXPECT_EQ(value_of(line), "(unset)") << line;
    EXPECT_EQ(take_reports(), no_space(line));
  }
}

TEST_F(RuntimeConfFile, SkipsALineWithoutAValue) {
  for (const std::string line : {"KEY\n", "KEY  \t\n", "KEY   # nothing\n", "KEY #\n", "KEY "}) {
    EXPECT_EQ(value_of(line), "(unset)") << line;
    EXPECT_EQ(take_reports(), no_value(line));
  }
}

TEST_F(RuntimeConfFile, ReportsALineFromItsFirstCharacterOn) {
  read("  \t=KEY v # note\n");
  EXPECT_EQ(take_reports(), no_space("=KEY v # note\n"));
  read(" KEY=v \n");
  EXPECT_EQ(take_reports(), no_space("KEY=v \n"));
  read("\tKEY  # note \n");
  EXPECT_EQ(take_reports(), no_value("KEY  # note \n"));
}

TEST_F(RuntimeConfFile, GoesOnAfterAMalformedLine) {
  EXPECT_EQ(read("A=1\nB 2\n=\nC\nD 4\n"), 0);
  EXPECT_EQ(entries(), (Entries{"B=2", "D=4"}));
  EXPECT_EQ(take_reports().size(), 3U);
}

TEST_F(RuntimeConfFile, KeepsTheEarlierValueBehindAMalformedLine) {
  EXPECT_EQ(value_of("KEY v\nKEY\nKEY=w\n"), "v");
}

TEST_F(RuntimeConfFile, ReportsAFileThatCannotBeOpened) {
  const std::string path = folder / "absent.conf";
  errno = 0;
  EXPECT_EQ(runtime_conf_read_file(path.c_str(), store), -1);
  EXPECT_EQ(errno, ENOENT);
  EXPECT_EQ(take_reports(),
            (Reports{{12, "unable to open configuration file " + path + ": No such file or directory\n"}}));
}

TEST_F(RuntimeConfFile, ReportsAReadError) {
  errno = 0;
  EXPECT_EQ(runtime_conf_read_file(folder.path().c_str(), store), -1);
  EXPECT_EQ(errno, EISDIR);
  EXPECT_EQ(take_reports(), (Reports{{12, "Unable to read configuration file: Is a directory"}}));
}

TEST_F(RuntimeConfFile, SortsWhatItReadBeforeAReadError) {
  const CallFault third(Call::getdelim, ENOMEM, 3);
  errno = 0;
  EXPECT_EQ(read("B 1\nA 2\nC 3\n"), -1);
  EXPECT_EQ(errno, ENOMEM);
  EXPECT_EQ(take_reports(), (Reports{{12, "Unable to read configuration file: Cannot allocate memory"}}));
  EXPECT_NE(store->sorted, 0);
  EXPECT_EQ(entries(), (Entries{"A=2", "B=1"}));
}

} // namespace

} // namespace tavek
