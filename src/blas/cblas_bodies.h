// Everything a generated CBLAS shard needs: the body templates of every shape and the
// selector that exports a routine.
#pragma once
#include "c_select.h"
#include "cblas_batch.h"
#include "cblas_gemm_road.h"
#include "cblas_level1.h"
#include "cblas_level2.h"
#include "cblas_level3.h"
#include "cblas_sparse.h"
