#include "rotation/directive_writer.h"

#include <stdexcept>

#include "runtime_conf/product_root.h"

namespace tavek {

namespace {

constexpr std::string_view kAnonymizeCommand =
    "\t\t" TAVEK_PRODUCT_ROOT "/admin/sbin/anonymize_ip --find-rotated-logs $*\n";

} // namespace

void DirectiveWriter::begin_stanza(std::string_view head) {
  output_.write(head);
  tally_.last_period.clear();
}

void DirectiveWriter::write_period(const std::string& type, const std::string& value, std::string_view pass_through) {
  if (!value.empty() && value == tally_.last_period) {
    return;
  }
  if (type == "by_size") {
    output_.write("\tsize=");
    output_.write(value);
    output_.write("\n");
  } else if (type == "by_time") {
    output_.write("\t");
    output_.write(value);
    output_.write("\n");
  } else if (type.empty()) {
    output_.write(pass_through);
  } else {
    throw std::runtime_error("Unknown rotation type: " + type);
  }
  ++tally_.periods;
  tally_.last_period = value;
}

void DirectiveWriter::write_rotate(int count, std::string_view pass_through) {
  if (count < 0) {
    output_.write(pass_through);
  } else {
    output_.write("\trotate ");
    output_.write(std::to_string(count));
    output_.write("\n");
  }
  ++tally_.rotates;
}

void DirectiveWriter::write_compress(bool compress) {
  output_.write(compress ? "\tcompress\n" : "\tnocompress\n");
  ++tally_.compresses;
}

void DirectiveWriter::write_mail(const std::string& address) {
  if (!address.empty()) {
    output_.write("\tmail ");
    output_.write(address);
    output_.write("\n\tmailfirst\n");
  }
  ++tally_.mails;
}

void DirectiveWriter::write_missingok() {
  output_.write("\tmissingok\n");
  ++tally_.missingoks;
}

void DirectiveWriter::write_copytruncate() {
  output_.write("\tcopytruncate\n");
  tally_.copytruncate_pending = false;
}

void DirectiveWriter::write_anonymize(PostrotateBlock block) {
  if (block == PostrotateBlock::write) {
    output_.write("\tpostrotate\n");
  }
  output_.write(kAnonymizeCommand);
  if (block == PostrotateBlock::write) {
    output_.write("\tendscript\n");
  }
  ++tally_.anonymizers;
}

void DirectiveWriter::write_anonymize_if(bool condition, PostrotateBlock block) {
  if (condition) {
    write_anonymize(block);
  }
}

} // namespace tavek
