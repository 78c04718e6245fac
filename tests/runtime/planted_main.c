/* Finds libqnl_rt.so through the search path it is given, changes into the
   folder named by its argument, and only then makes its first call. */
#include <stdio.h>
#include <unistd.h>

int QNL_Get_Max_Threads(void);

int main(int argc, char** argv) {
  if (argc < 2 || chdir(argv[1]) != 0) return 3;
  printf("threads %d\n", QNL_Get_Max_Threads());
  return 0;
}
