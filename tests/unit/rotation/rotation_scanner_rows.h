#pragma once

// The texts that the scanner's rules are tried on. The rules are those of a table of patterns of which the longest
// match wins, the earlier one on a tie; "to the end of the line" includes the newline, and a NUL is a byte like any
// other.

#include <string_view>

namespace tavek {

using namespace std::string_view_literals;

// What a stanza gets for each kind of directive, in the order in which lacking ones are added before its brace.
inline constexpr std::string_view kPeriod = "\tweekly\n";
inline constexpr std::string_view kRotate = "\trotate 5\n";
inline constexpr std::string_view kCompress = "\tcompress\n";
inline constexpr std::string_view kMail = "\tmail a@b\n\tmailfirst\n";
inline constexpr std::string_view kMissingok = "\tmissingok\n";
inline constexpr std::string_view kCopytruncate = "\tcopytruncate\n";
inline constexpr std::string_view kAll =
    "\tweekly\n\trotate 5\n\tcompress\n\tmail a@b\n\tmailfirst\n\tmissingok\n\tcopytruncate\n";
inline constexpr std::string_view kKinds[] = {kPeriod, kRotate, kCompress, kMail, kMissingok, kCopytruncate};

// Each opens a stanza at its end: the next brace gets all directives.
inline constexpr std::string_view kOpeners[] = {
    "/a {\n"sv,
    "/a{\n"sv,
    "/{\n"sv,
    " \t/a {\n"sv,
    "\"/a b\" /c {\n"sv,
    "x/y {\n"sv,
    "/a\n/b\n{\n"sv,
    "/a\n}\n{\n"sv,
    "/a # {\n"sv,
    "/a\n# a comment within the head\n{\n"sv,
    "/a\n# {\n"sv,
    " # no comment, for it is indented: /a {\n"sv,
    "x # nor this: /a {\n"sv,
    "# a comment with /a {\n/b {\n"sv,
    "/a\n# a brace: { /\n/b {\n"sv,
    "/a {x /b {\n"sv,
    "/a { \n/b {\n"sv,
    "/a {\r\n/b {\n"sv,
    "{\n/a {\n"sv,
    "}#/a {\n"sv,
    "daily\nrotate 1\n/a {\n"sv,
    "\0/a {\n"sv,
    "x\0/a {\n"sv,
    "\0#/a {\n"sv,
    "#\0/a {\n/b {\n"sv,
    "/a\0b {\n"sv,
    "#/\0\0\n/a {\n"sv,
};

// None opens a stanza.
inline constexpr std::string_view kOrdinaryTexts[] = {
    ""sv,
    "\n"sv,
    "# /a {\n"sv,
    "#/a {\n"sv,
    "x\n# /a {\n"sv,
    "# {\n"sv,
    "#\0/a {\n"sv,
    "#\0\0\n#\0/a {\n"sv,
    "/a { \n"sv,
    "/a {\t\n"sv,
    "/a {\r\n"sv,
    "/a { # comment\n"sv,
    "/a {\0\n"sv,
    "/a\n"sv,
    "/a {}\n"sv,
    "/a\nb {c\n# /d {\n"sv,
    "{\n"sv,
    "a {\n"sv,
    "}\n"sv,
    "compress\nmail x\nmailfirst\n\tpostrotate\n\tendscript\n"sv,
    "\0\xff\xfe\x80\r\n"sv,
};

struct ManagedLine {
  std::string_view line;
  std::string_view replacement;
};

// Lines of a stanza that are about one kind of directive.
inline constexpr ManagedLine kManagedLines[] = {
    {"daily\n"sv, kPeriod},
    {" \t weekly\n"sv, kPeriod},
    {"monthly\n"sv, kPeriod},
    {"size 100k\n"sv, kPeriod},
    {"size=100k\n"sv, kPeriod},
    {"size\n"sv, kPeriod},
    {"sizes\n"sv, kPeriod},
    {"dailyish\n"sv, kPeriod},
    {"daily }\n"sv, kPeriod},
    {"daily}{ /x {\n"sv, kPeriod},
    {"daily\r\n"sv, kPeriod},
    {"daily\0\n"sv, kPeriod},
    {"size 1\0\0M } \n"sv, kPeriod},
    {"rotate 4\n"sv, kRotate},
    {"\trotate\t4 }\n"sv, kRotate},
    {"rotate \n"sv, kRotate},
    {"rotate x\r\n"sv, kRotate},
    {"rotate \0 4\n"sv, kRotate},
    {"compress\n"sv, kCompress},
    {"nocompress\n"sv, kCompress},
    {" \tcompress\t \n"sv, kCompress},
    {"missingok\n"sv, kMissingok},
    {"\tnomissingok \n"sv, kMissingok},
    {"copytruncate\n"sv, kCopytruncate},
    {"  copytruncate\t\n"sv, kCopytruncate},
    {"mail x@y\n"sv, kMail},
    {"\tmail\tx }\n"sv, kMail},
    {"mail  \n"sv, kMail},
    {"mail x\0y\n"sv, kMail},
};

// Lines of a stanza that are about nothing managed.
inline constexpr std::string_view kUnmanagedLines[] = {
    "delaycompress\n"sv,
    "nodelaycompress\n"sv,
    "nocopytruncate\n"sv,
    "nomail\n"sv,
    "yearly\n"sv,
    "hourly\n"sv,
    "minsize 1M\n"sv,
    "maxsize 1M\n"sv,
    "maxage 3\n"sv,
    "compresscmd x\n"sv,
    "compress x\n"sv,
    "compress\r\n"sv,
    "compress\0\n"sv,
    "nonocompress\n"sv,
    "missingok # why\n"sv,
    "missingok\r\n"sv,
    "copytruncate\0\n"sv,
    "copytruncate x\n"sv,
    "rotate\n"sv,
    "rotate5\n"sv,
    "rotate\r\n"sv,
    "rotate=5\n"sv,
    "mail\n"sv,
    "mailx y\n"sv,
    "mail=x\n"sv,
    "mailfirst x\n"sv,
    "maillast\r\n"sv,
    "Daily\n"sv,
    "dail\n"sv,
    "x daily\n"sv,
    "# daily\n"sv,
    "#\tcompress\n"sv,
    "\vdaily\n"sv,
    "\0daily\n"sv,
    " \0 daily\n"sv,
    "postrotate x\n"sv,
    "postrotate\r\n"sv,
    "postrotated\n"sv,
    "endscript\n"sv,
    "\n"sv,
    " \t\n"sv,
    "\0\n"sv,
    "/b {\n"sv,
    "{\n"sv,
    "su root adm\n"sv,
    "prerotate\n\tx\nendscript\n"sv,
};

// A stanza whose last line has no newline: that line is no directive.
inline constexpr std::string_view kUnfinishedLines[] = {
    "daily"sv,    "\tsize=1"sv,  "rotate 5"sv,   "rotate "sv, "compress"sv,    "nomissingok"sv, "copytruncate"sv,
    "mail x@y"sv, "mailfirst"sv, "postrotate"sv, "daily\0"sv, "size 1\0\0M"sv, "rotate \0"sv,   "mail x\0 y"sv,
};

// Lines of a postrotate script that are copied, whatever they say.
inline constexpr std::string_view kScriptLines[] = {
    "}\n"sv,
    "daily\n"sv,
    "rotate 5\n"sv,
    "compress\n"sv,
    "mail x\n"sv,
    "mailfirst\n"sv,
    "postrotate\n"sv,
    "/b {\n"sv,
    "/usr/bin/x $*\n"sv,
    "endscripts\n"sv,
    "endscript x\n"sv,
    "endscript\r\n"sv,
    "endscript\0\n"sv,
    "xendscript\n"sv,
    "#endscript\n"sv,
    "\0endscript\n"sv,
    "\n"sv,
    "/\n"sv,
    "/x/anonymize_ip\n"sv,
    "x /x/anonymize_ip a\n"sv,
    "\0/x/anonymize_ip a\n"sv,
    "/bin/x\0/y /x/anonymize_ip a\n"sv,
};

// Commands that run the anonymizer.
inline constexpr std::string_view kAnonymizers[] = {
    "/x/anonymize_ip $*\n"sv,   "\t \t/usr/local/x/admin/sbin/anonymize_ip\t--find-rotated-logs $*\n"sv,
    "/x/anonymize_ip \n"sv,     "/x/anonymize_ip a\0b }\n"sv,
    "/x\0y/anonymize_ip a\n"sv,
};

} // namespace tavek
