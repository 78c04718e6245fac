/* The Netlib CBLAS testers copy this flag of the reference CBLAS at start-up;
 * neither libqnl_rt.so nor OpenBLAS has it, so the test run preloads it. */
int RowMajorStrg = 0;
