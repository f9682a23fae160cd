#include "runtime_conf/runtime_conf.h"

#include <array>
#include <cerrno>
#include <cstdlib>
#include <cstring>

#include "log/log.h"
#include "runtime_conf/runtime_conf_file.h"
#include "runtime_conf/runtime_conf_keys.h"
#include "runtime_conf/runtime_conf_store.h"

namespace tavek {

namespace {

constexpr int kErrorLevel = 3;

struct RuntimeConfState {
  const char* path = kRuntimeConfPath;
  RuntimeConf* loaded = nullptr;                      // Null until a load succeeds.
  std::array<const char*, kRuntimeConfKeys> values{}; // Cache: the file's values that have been looked up.
};

RuntimeConfState state;

} // namespace

int runtime_conf_load() {
  if (state.loaded != nullptr) {
    return 0;
  }
  auto* store = static_cast<RuntimeConf*>(calloc(1, sizeof(RuntimeConf)));
  if (store == nullptr) {
    log_state().log_hook(kErrorLevel, "Not enough memory to allocate Tavek runtime configuration structure");
    errno = ENOMEM;
    return -1;
  }
  if (runtime_conf_read_file(state.path, store) == -1) {
    const int error = errno;
    runtime_conf_free(store);
    errno = error;
    return -1;
  }
  state.loaded = store;
  return 0;
}

const char* runtime_conf_lookup(const char* name) {
  if (runtime_conf_load() != 0) {
    return nullptr;
  }
  return runtime_conf_find(state.loaded, name);
}

const char* runtime_conf_file_value(int index) {
  const char*& value = state.values[static_cast<std::size_t>(index)];
  if (value == nullptr) {
    value = runtime_conf_lookup(kRuntimeConfKeyRows[index].name);
  }
  return value;
}

const char* runtime_conf_get(int index) {
  const char* value = runtime_conf_file_value(index);
  return value != nullptr ? value : kRuntimeConfKeyRows[index].value;
}

const char* runtime_conf_get_by_name(const char* name) {
  // The lower sentinel can be looked up by name; the upper one only ends the search.
  for (int index = 0; index < MAX_POSSIBLE_ORU_CONF_VAR; ++index) {
    if (strcmp(name, kRuntimeConfKeyRows[index].name) == 0) {
      return runtime_conf_get(index);
    }
  }
  log_state().log_hook(kErrorLevel, "variable '%s' was found neither in %s, nor in compile-time defaults", name,
                       state.path);
  return nullptr;
}

void runtime_conf_reset() {
  runtime_conf_free(state.loaded);
  state.loaded = nullptr;
  state.values = {};
}

void runtime_conf_use_file(const char* path) {
  state.path = path != nullptr ? path : kRuntimeConfPath;
}

} // namespace tavek
