#include "rotation/rotation_scanner.h"

#include <cerrno>
#include <gtest/gtest.h>
#include <new>
#include <stdexcept>

#include "support/call_fault.h"
#include "support/temporary_directory.h"
#include "unit/rotation/captured_output.h"
#include "unit/rotation/rotation_scanner_rows.h"

namespace tavek {

namespace {

using namespace std::literals;

RewriteJob job_for_a_host() {
  RewriteJob job;
  job.settings.period_type = "by_time";
  job.settings.period = "weekly";
  job.settings.rot_count = 5;
  job.settings.compress = true;
  job.settings.email = "a@b";
  return job;
}

RewriteJob job_that_changes_nothing() {
  RewriteJob job;
  job.settings.system_mode = true;
  return job;
}

// One pass over the texts, one after another.
std::string scanned_in_turn(const RewriteJob& job, const std::vector<std::string>& texts) {
  CapturedOutput output;
  RewriteContext context(job, output.stream());
  RotationScanner scanner(context);
  const TemporaryDirectory directory;
  for (const std::string& text : texts) {
    ScannerInput input(directory.write("input", text));
    scanner.scan(input);
  }
  return output.text();
}

std::string scanned(const RewriteJob& job, const std::string& text) {
  return scanned_in_turn(job, {text});
}

std::string joined(std::initializer_list<std::string_view> parts) {
  std::string text;
  for (const std::string_view part : parts) {
    text += part;
  }
  return text;
}

// All directives that a stanza gets, but those of one kind.
std::string all_but(std::string_view own) {
  std::string text;
  for (const std::string_view kind : kKinds) {
    text += kind == own ? "" : kind;
  }
  return text;
}

TEST(RotationScanner, AHeadOpensAStanza) {
  for (const std::string_view opener : kOpeners) {
    EXPECT_EQ(scanned(job_for_a_host(), joined({opener, "}\n"})), joined({opener, kAll, "}\n"}));
  }
}

// Where no stanza is open, directives and braces are ordinary text as well.
TEST(RotationScanner, OrdinaryTextIsCopied) {
  for (const std::string_view text : kOrdinaryTexts) {
    const std::string whole = joined({text, "\n\tdaily\n\tmail x\n}\n"});
    EXPECT_EQ(scanned(job_for_a_host(), whole), whole);
  }
}

TEST(RotationScanner, TextWithoutAnEndIsCopied) {
  for (const std::string_view text :
       {"x"sv, "#"sv, "# /a {"sv, "/"sv, "/a {"sv, "/a\n"sv, "\0"sv, "#x\0"sv, "x/\0"sv}) {
    EXPECT_EQ(scanned(job_for_a_host(), std::string(text)), text);
  }
}

TEST(RotationScanner, AManagedLineIsReplaced) {
  for (const ManagedLine& row : kManagedLines) {
    EXPECT_EQ(scanned(job_for_a_host(), joined({"/a {\n", row.line, "}\n"})),
              joined({"/a {\n", row.replacement, all_but(row.replacement), "}\n"}))
        << row.line;
  }
}

TEST(RotationScanner, AnUnmanagedLineIsCopied) {
  for (const std::string_view line : kUnmanagedLines) {
    EXPECT_EQ(scanned(job_for_a_host(), joined({"/a {\n", line, "}\n"})), joined({"/a {\n", line, kAll, "}\n"}));
  }
}

TEST(RotationScanner, AManagedLineAfterAnyOtherIsStillSeen) {
  for (const std::string_view line : kUnmanagedLines) {
    EXPECT_EQ(scanned(job_for_a_host(), joined({"/a {\n", line, "daily\n}\n"})),
              joined({"/a {\n", line, kPeriod, all_but(kPeriod), "}\n"}));
  }
}

TEST(RotationScanner, DirectivesOfTheMailWriterAreDropped) {
  for (const std::string_view line : {"mailfirst\n"sv, "\tmaillast \t\n"sv, "mailfirst\nmaillast\n"sv}) {
    EXPECT_EQ(scanned(job_for_a_host(), joined({"/a {\n", line, "}\n"})), joined({"/a {\n", kAll, "}\n"}));
    EXPECT_EQ(scanned(job_that_changes_nothing(), joined({"/a {\n", line, "}\n"})), "/a {\n}\n");
  }
}

TEST(RotationScanner, ALineWithoutANewlineIsNoDirective) {
  for (const std::string_view line : kUnfinishedLines) {
    const std::string whole = joined({"/a {\n", line});
    EXPECT_EQ(scanned(job_for_a_host(), whole), whole);
  }
}

TEST(RotationScanner, ACommandWithoutANewlineIsNoCommand) {
  for (const std::string_view line : {"/"sv, "\t/"sv, "/x/anonymize_ip a"sv, "endscript"sv}) {
    const std::string whole = joined({"/a {\npostrotate\n", line});
    EXPECT_EQ(scanned(job_for_a_host(), whole), whole);
  }
}

// What a line without a newline holds is text like any other, so its brace closes the stanza.
TEST(RotationScanner, ABraceInAnUnfinishedDirectiveClosesTheStanza) {
  EXPECT_EQ(scanned(job_for_a_host(), "/a {\ndaily } x"), joined({"/a {\ndaily ", kAll, "} x"}));
  EXPECT_EQ(scanned(job_for_a_host(), "/a {\nmail x\0}"s), joined({"/a {\nmail x\0"sv, kAll, "}"}));
}

TEST(RotationScanner, ABraceClosesAStanzaWhereverItStands) {
  for (const std::string_view before : {"x "sv, "\t"sv, "# a comment "sv, "\0"sv, "x\0y"sv, "su root adm\n  "sv}) {
    EXPECT_EQ(scanned(job_for_a_host(), joined({"/a {\n", before, "} rest\n"})),
              joined({"/a {\n", before, kAll, "} rest\n"}));
  }
}

TEST(RotationScanner, BehindTheBraceNoStanzaIsOpen) {
  EXPECT_EQ(scanned(job_for_a_host(), "/a {\n}}\ndaily\n}\n"), joined({"/a {\n", kAll, "}}\ndaily\n}\n"}));
  EXPECT_EQ(scanned(job_for_a_host(), "/a {\n}\n#/b {\n}\n"), joined({"/a {\n", kAll, "}\n#/b {\n}\n"}));
}

// The rest of the brace's line does not begin a line, so '#' begins no comment there.
TEST(RotationScanner, TheNextStanzaMayOpenOnTheLineOfABrace) {
  for (const std::string_view between : {"}/b {\n"sv, "} # /b {\n"sv, "}#/b {\n"sv}) {
    EXPECT_EQ(scanned(job_for_a_host(), joined({"/a {\n", between, "}\n"})),
              joined({"/a {\n", kAll, between, kAll, "}\n"}));
  }
}

TEST(RotationScanner, AScriptIsCopiedUpToItsEnd) {
  for (const std::string_view line : kScriptLines) {
    RewriteJob job = job_for_a_host();
    job.settings.anonymize = Switch::off;
    const std::string script = joined({"\tpostrotate\n", line, "\tendscript\n"});
    EXPECT_EQ(scanned(job, joined({"/a {\n", script, "}\n"})), joined({"/a {\n", script, kAll, "}\n"}));
  }
}

TEST(RotationScanner, ALineOfBlanksMayStandAroundTheWordsOfAScript) {
  const std::string script = " \tpostrotate\t \n} daily\n \tendscript \t\n";
  EXPECT_EQ(scanned(job_for_a_host(), joined({"/a {\n", script, "daily\n}\n"})),
            joined({"/a {\n", script, kPeriod, all_but(kPeriod), "}\n"}));
}

TEST(RotationScanner, AnAnonymizingCommandFollowsItsSwitch) {
  constexpr std::string_view command = "\t\t/opt/oru/admin/sbin/anonymize_ip --find-rotated-logs $*\n";
  for (const std::string_view line : kAnonymizers) {
    const std::string input = joined({"/a {\npostrotate\n", line, "endscript\n}\n"});
    const auto expected = [](std::string_view kept) {
      return joined({"/a {\npostrotate\n", kept, "endscript\n", kAll, "}\n"});
    };
    RewriteJob job = job_for_a_host();
    EXPECT_EQ(scanned(job, input), expected(line));
    job.settings.anonymize = Switch::off;
    EXPECT_EQ(scanned(job, input), expected(""));
    job.settings.anonymize = Switch::on;
    EXPECT_EQ(scanned(job, input), expected(command));
  }
}

TEST(RotationScanner, AScriptWithoutAnEndIsCopied) {
  RewriteJob job = job_for_a_host();
  job.settings.anonymize = Switch::off;
  for (const std::string_view line :
       {"/x/anonymize_ip a"sv, "endscript"sv, "/x/anonymize_ip a\0"sv, "}\n"sv, "x\0"sv}) {
    const std::string whole = joined({"/a {\npostrotate\n", line});
    EXPECT_EQ(scanned(job, whole), whole);
  }
}

TEST(RotationScanner, PeriodAndCountOfTheFilePassThroughToTheByte) {
  const std::string whole("/a {\n \tsize 1\0M\r\nrotate \0 9}\n\tdaily }\n}\n"sv);
  EXPECT_EQ(scanned(job_that_changes_nothing(), whole), whole);
}

TEST(RotationScanner, SystemModeCopiesWhatItDoesNotManage) {
  const std::string whole = "/a {\n compress\n nomissingok\n copytruncate\n mail x@y\n}\n";
  EXPECT_EQ(scanned(job_that_changes_nothing(), whole), whole);
}

TEST(RotationScanner, CopiesEveryByte) {
  std::string bytes;
  for (int first = 0; first < 256; ++first) {
    bytes += static_cast<char>(first);
    bytes += "x\n";
    bytes += static_cast<char>(first);
  }
  std::erase_if(bytes, [](char byte) { return byte == '{' || byte == '}'; });
  EXPECT_EQ(scanned(job_for_a_host(), bytes), bytes);
  EXPECT_EQ(scanned(job_for_a_host(), "/a {\n" + bytes + "}"), joined({"/a {\n", bytes, kAll, "}"}));
}

// Longer than any buffer between the file and the rules.
TEST(RotationScanner, CopiesTextsOfAnyLength) {
  for (const std::string_view unit : {"x"sv, "/"sv, "\0"sv, " "sv, "#"sv, "/\n"sv, "# /\n"sv}) {
    std::string text;
    for (std::size_t length = 0; length < 300000; length += unit.size()) {
      text += unit;
    }
    EXPECT_TRUE(scanned(job_for_a_host(), text) == text) << unit;
    EXPECT_TRUE(scanned(job_for_a_host(), "# " + text) == "# " + text) << unit;
    EXPECT_TRUE(scanned(job_that_changes_nothing(), "/a {\nsize " + text + "\n}") == "/a {\nsize " + text + "\n}")
        << unit;
  }
}

TEST(RotationScanner, GoesOnInTheNextTextWhereItWasInTheLast) {
  EXPECT_EQ(scanned_in_turn(job_for_a_host(), {"/a {\n", "daily\n}\n"}),
            joined({"/a {\n", kPeriod, all_but(kPeriod), "}\n"}));
  EXPECT_EQ(scanned_in_turn(job_for_a_host(), {"/a {\npostrotate\n", "daily\n}\nendscript\n}"}),
            joined({"/a {\npostrotate\ndaily\n}\nendscript\n", kAll, "}"}));
}

TEST(RotationScanner, EveryTextBeginsALine) {
  EXPECT_EQ(scanned_in_turn(job_for_a_host(), {"/a {\nx", "daily\n}"}),
            joined({"/a {\nx", kPeriod, all_but(kPeriod), "}"}));
  EXPECT_EQ(scanned_in_turn(job_for_a_host(), {"x", "#/a {\n}"}), "x#/a {\n}");
}

TEST(RotationScanner, LetsTheErrorsOfTheContextPass) {
  RewriteJob job = job_for_a_host();
  job.settings.period_type = "by_moon";
  EXPECT_THROW(scanned(job, "/a {\ndaily\n}\n"), std::runtime_error);
  EXPECT_THROW(scanned(job, "/a {\n}\n"), std::runtime_error);
}

TEST(RotationScanner, CannotBeMadeWithoutMemory) {
  const RewriteJob job;
  CapturedOutput output;
  RewriteContext context(job, output.stream());
  const CallFault first(Call::allocation, ENOMEM);
  EXPECT_THROW(RotationScanner{context}, std::bad_alloc);
}

} // namespace

} // namespace tavek
