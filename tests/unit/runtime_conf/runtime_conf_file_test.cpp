#include "runtime_conf/runtime_conf_file.h"

#include <cerrno>
#include <gtest/gtest.h>
#include <string>
#include <sys/stat.h>
#include <vector>

#include "support/call_fault.h"
#include "support/open_descriptors.h"
#include "support/temporary_directory.h"
#include "unit/runtime_conf/fresh_store.h"

namespace tavek {

namespace {

using test::Reports;
using Entries = std::vector<std::string>;

// Reads files into an empty store.
class RuntimeConfFile : public test::FreshStore {
protected:
  int read(const std::string& content) {
    return runtime_conf_read_file(folder.write("oru.conf", content).c_str(), store);
  }

  TemporaryDirectory folder;
};

Reports no_space(const std::string& line) {
  return {{12, "Invalid variable definition " + line + "\nExpected a space after variable name\n"}};
}
Reports no_value(const std::string& line) {
  return {{12, "Invalid variable definition " + line + "\nExpected a value"}};
}

TEST_F(RuntimeConfFile, FillsAndSortsTheStore) {
  EXPECT_EQ(read("B 1\nC 2\nA 3\nC 4\n"), 0);
  EXPECT_NE(store->sorted, 0);
  EXPECT_EQ(entries(), (Entries{"A=3", "B=1", "C=4"}));
  EXPECT_EQ(take_reports(), Reports{});
}

TEST_F(RuntimeConfFile, ReservesRoomEvenForAnEmptyFile) {
  EXPECT_EQ(read(""), 0);
  EXPECT_EQ(store->capacity, 20U);
  EXPECT_EQ(store->count, 0U);
}

TEST_F(RuntimeConfFile, LeavesNoDescriptorOpen) {
  const auto before = open_descriptors();
  EXPECT_EQ(read("A 1\n"), 0);
  EXPECT_EQ(open_descriptors(), before);
}

TEST_F(RuntimeConfFile, ReportsALineFromItsFirstNonBlankCharacter) {
  read("  \t=KEY v # note\n");
  EXPECT_EQ(take_reports(), no_space("=KEY v # note\n"));
  read("\tKEY  # note \n");
  EXPECT_EQ(take_reports(), no_value("KEY  # note \n"));
}

TEST_F(RuntimeConfFile, ContinuesAfterAMalformedLine) {
  EXPECT_EQ(read("A=1\nB 2\n=\nB\nD 4\n"), 0);
  EXPECT_EQ(entries(), (Entries{"B=2", "D=4"}));
  EXPECT_EQ(take_reports().size(), 3U);
}

TEST_F(RuntimeConfFile, ReportsAFileThatCannotBeOpened) {
  const std::string path = folder / "absent.conf";
  errno = 0;
  EXPECT_EQ(runtime_conf_read_file(path.c_str(), store), -1);
  EXPECT_EQ(errno, ENOENT);
  EXPECT_EQ(take_reports(),
            (Reports{{12, "unable to open configuration file " + path + ": No such file or directory\n"}}));
}

// Opening a FIFO must not wait for a writer, and reading a device such as /dev/zero would never end.
TEST_F(RuntimeConfFile, TreatsAFileThatIsNotRegularAsEmpty) {
  const std::string fifo = folder / "fifo";
  ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
  for (const std::string& path : {fifo, std::string("/dev/null"), std::string("/dev/zero")}) {
    const auto before = open_descriptors();
    EXPECT_EQ(runtime_conf_read_file(path.c_str(), store), 0) << path;
    EXPECT_EQ(entries(), Entries{}) << path;
    EXPECT_EQ(open_descriptors(), before) << path;
  }
  EXPECT_EQ(take_reports(), Reports{});
}

TEST_F(RuntimeConfFile, ReportsADirectoryWhichCannotBeRead) {
  errno = 0;
  EXPECT_EQ(runtime_conf_read_file(folder.path().c_str(), store), -1);
  EXPECT_EQ(errno, EISDIR);
  EXPECT_EQ(take_reports(), (Reports{{12, "Unable to read configuration file: Is a directory"}}));
}

TEST_F(RuntimeConfFile, ClosesAFileThatCannotBecomeAStream) {
  const std::ptrdiff_t before = open_descriptors();
  const CallFault stream(Call::fdopen, ENOMEM);
  EXPECT_EQ(read("KEY value\n"), -1);
  EXPECT_EQ(errno, ENOMEM);
  EXPECT_EQ(take_reports().size(), 1U);
  EXPECT_EQ(open_descriptors(), before);
}

TEST_F(RuntimeConfFile, SortsTheLinesBeforeAReadError) {
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
