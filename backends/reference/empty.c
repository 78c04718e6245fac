/* Nothing: stands in at link time for a library found by its full path at run time. */
