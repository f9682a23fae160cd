#include "rotation/vhost_generator.h"

#include <string>
#include <string_view>

#include "runtime_conf/runtime_conf.h"

namespace tavek {

namespace {

constexpr std::string_view kHeader = "#ATTENTION!\n"
                                     "#\n"
                                     "#DO NOT MODIFY THIS FILE BECAUSE IT WAS GENERATED AUTOMATICALLY,\n"
                                     "#SO ALL YOUR CHANGES WILL BE LOST THE NEXT TIME THE FILE IS GENERATED.\n";

// A family of a virtual host's logs.
struct LogFamily {
  std::string_view pattern; // Relative to the host's logs directory.
  bool anonymized;          // Whether its stanza in a new file may anonymize.
};

// The last one is deliberately not anonymized in a new file. The next run with anonymization anonymizes it too, because
// a rewrite adds the command to every stanza of a host that lacks it.
constexpr LogFamily kLogFamilies[] = {
    {"*.processed", true},
    {"error_log", true},
    {"proxy_error_log", true},
    {"php-fpm_error.log", false},
};

std::string stanza_head(const std::string& vhost_name, const LogFamily& family) {
  std::string head = runtime_conf_get(HTTPD_VHOSTS_D);
  head.append("/system/").append(vhost_name).append("/logs/").append(family.pattern).append(" {\n");
  return head;
}

void write_stanza(const RotationSettings& settings, const LogFamily& family, DirectiveWriter& writer) {
  writer.begin_stanza(stanza_head(settings.vhost_name, family));
  writer.write_period(settings.period_type, settings.period, "");
  writer.write_rotate(settings.rot_count, "");
  writer.write_compress(settings.compress);
  writer.write_mail(settings.email);
  writer.write_missingok();
  writer.write_copytruncate();
  writer.write_anonymize_if(family.anonymized && settings.anonymize == Switch::on, PostrotateBlock::write);
  writer.copy("}\n");
}

} // namespace

void write_default_file(const RotationSettings& settings, DirectiveWriter& writer) {
  writer.copy(kHeader);
  // Without this, logrotate refuses a log that has a second hard link.
  writer.copy("\nallowhardlink\n");
  for (const LogFamily& family : kLogFamilies) {
    write_stanza(settings, family, writer);
  }
}

} // namespace tavek
