// The verbose frame of computational entries: with the back-end's mode at 0 a
// call costs two loads and a test; otherwise the call is timed, a one-line
// record of it is formatted and the back-end prints it.
#pragma once
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <type_traits>

#include "entry.h"
#include "services_gen.h"

namespace qnl::verbose {

constexpr int kRecordSize = 200;

// Mode of an entry that has not yet asked the back-end. Never written.
extern const int32_t kUnknownMode QNL_HIDDEN;

// Per-entry trace state: the cell points at -1 until the first traced call,
// then forever at the back-end's mode integer.
struct Site {
  std::atomic<const int32_t*> cell{&kUnknownMode};
  int32_t width = 0;  // 1 on LP64, 2 otherwise; written before each print
  Site() = default;
  // A site whose cell starts null: no address to relocate at load. Its owner
  // points the cell at kUnknownMode on its first (binding) call, before any
  // mode() read.
  constexpr explicit Site(std::nullptr_t) : cell{nullptr} {}
  int32_t mode() const { return *cell.load(std::memory_order_relaxed); }
};

// Values of a record: integers are read as 32 bits from the caller's variable
// (0 for a null pointer), characters as their first byte.
inline int rec_int(const void* p) { return p ? *static_cast<const int32_t*>(p) : 0; }
inline int rec_char(const void* p) { return static_cast<signed char>(*static_cast<const char*>(p)); }
inline const void* rec_ptr(const void* p) { return p; }

// Formats a record into a 200-byte buffer, at most 199 characters.
void format_record(char* buf, const char* format, ...) QNL_HIDDEN __attribute__((format(printf, 2, 3)));
// Times, widths and prints: the tail of a traced call.
void print_record(Site& site, double t, const char* record) QNL_HIDDEN;

// An integer result crosses a traced call as its low 32 bits.
template <class R>
inline R hold(R r) {
  if constexpr (std::is_integral_v<R> && sizeof(R) > 4)
    return static_cast<R>(static_cast<uint32_t>(r));
  else
    return r;
}

// The out-of-line road: a call entered with a mode other than 0, or a call that
// an argument check rejected (`call` then does nothing and returns zero).
template <class Call, class Record>
QNL_COLD auto traced(Site& site, int32_t m, Call&& call, Record&& record) -> decltype(call()) {
  using R = decltype(call());
  if (m == -1) site.cell.store(static_cast<const int32_t*>(qnl_body_qnl_serv_iface_verbose_mode()),
                               std::memory_order_relaxed);
  m = site.mode();
  double t = m == 1 ? -qnl_body_qnl_serv_iface_dsecnd() : 0.0;
  auto finish = [&] {
    // A start time of exactly 0 takes no second reading; NaN counts as not 0.
    if (t != 0) t += qnl_body_qnl_serv_iface_dsecnd();
    char buf[kRecordSize];
    record(buf);
    print_record(site, t, buf);
  };
  if constexpr (std::is_void_v<R>) {
    call();
    if (m == 0) return;
    finish();
  } else {
    R r = call();
    if (m == 0) return r;
    finish();
    return hold(r);
  }
}

// The frame around a back-end call, given the mode read at the entry's head.
template <class Call, class Record>
inline auto run(Site& site, int32_t m, Call&& call, Record&& record) -> decltype(call()) {
  if (__builtin_expect(m == 0, 1)) return call();
  return traced(site, m, call, record);
}

// The rejected road: no back-end call, but the record is printed as for a call.
template <class R, class Record>
QNL_COLD R rejected(Site& site, int32_t m, Record&& record) {
  return traced(site, m, [] { return R(); }, record);
}

}  // namespace qnl::verbose
