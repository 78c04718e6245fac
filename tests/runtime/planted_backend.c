/* A library an attacker leaves where a back-end would be found if the module
   folder were read against the working directory. */
#include <stdio.h>

__attribute__((constructor)) static void announce(void) {
  puts("PLANTED");
  fflush(stdout);
}

__attribute__((visibility("default"))) int qnl_serv_get_max_threads(void) { return 666; }
