# Service entries: one row per routine, forwarded to qnl_serv_<symbol> in the threading-layer library.
#
# kind     spellings exported
#   twin     UPPER (by reference) + upper's aliases lower, lower_; Mixed is a separate by-value entry
#   alias    UPPER (by reference) + aliases Mixed, lower, lower_
#   fortran  UPPER (by reference) + aliases lower, lower_
#   hook     UPPER (by reference) + aliases lower, lower_, UPPER_
#   c        the one name, by value
#   local    the one name; hand-written body kept in the facade (no back-end symbol)
# result   - void, i int32, l int64, d double, s float, p pointer (letters of tools/qnlgen/model.py)
# args     i32 u64 f64 ptr: read through a pointer in by-reference spellings, passed by value otherwise
#          i32v: by value in every spelling; ptr: an address passed on as it is; ptr*: a pointer cell
#          read through the caller's pointer in by-reference spellings; str: characters the routine
#          reads, txt: characters it writes, i32o u64o i64o f64o: a value it writes, i32r f64r: a
#          value it reads, ver: the version record, exith xerh progh pivh: a handler of the public
#          header's types (addresses in every spelling, typed for the facade, void* at the back-end)
#
# kind    UPPER                           Mixed                             result args               symbol
# memory
twin      QNL_MALLOC                      QNL_malloc                        p      u64,i32            malloc
twin      QNL_CALLOC                      QNL_calloc                        p      u64,u64,i32        calloc
twin      QNL_REALLOC                     QNL_realloc                       p      ptr*,u64           realloc
twin      QNL_FREE                        QNL_free                          -      ptr*               free
alias     QNL_FREE_BUFFERS                QNL_Free_Buffers                  -      -                  free_buffers
alias     QNL_THREAD_FREE_BUFFERS         QNL_Thread_Free_Buffers           -      -                  thread_free_buffers
alias     QNL_DISABLE_FAST_MM             QNL_Disable_Fast_MM               i      -                  disable_fast_mm
alias     QNL_MEM_STAT                    QNL_Mem_Stat                      l      i32o               mem_stat
twin      QNL_PEAK_MEM_USAGE              QNL_Peak_Mem_Usage                l      i32                peak_mem_usage
twin      QNL_SET_MEMORY_LIMIT            QNL_Set_Memory_Limit              i      i32,u64            set_memory_limit
# threads
twin      QNL_SET_NUM_THREADS             QNL_Set_Num_Threads               -      i32                set_num_threads
twin      QNL_SET_NUM_THREADS_LOCAL       QNL_Set_Num_Threads_Local         i      i32                set_num_threads_local
alias     QNL_GET_MAX_THREADS             QNL_Get_Max_Threads               i      -                  get_max_threads
twin      QNL_DOMAIN_SET_NUM_THREADS      QNL_Domain_Set_Num_Threads        i      i32,i32            domain_set_num_threads
twin      QNL_DOMAIN_GET_MAX_THREADS      QNL_Domain_Get_Max_Threads        i      i32                domain_get_max_threads
twin      QNL_SET_DYNAMIC                 QNL_Set_Dynamic                   -      i32                set_dynamic
alias     QNL_GET_DYNAMIC                 QNL_Get_Dynamic                   i      -                  get_dynamic
twin      QNL_SET_NUM_STRIPES             QNL_Set_Num_Stripes               -      i32                set_num_stripes
alias     QNL_GET_NUM_STRIPES             QNL_Get_Num_Stripes               i      -                  get_num_stripes
# timers, processor, reproducibility
fortran   DSECND                          -                                 d      -                  dsecnd
fortran   SECOND                          -                                 s      -                  second
alias     QNL_GET_CPU_CLOCKS              QNL_Get_Cpu_Clocks                -      u64o               get_cpu_clocks
alias     QNL_GET_CPU_FREQUENCY           QNL_Get_Cpu_Frequency             d      -                  get_cpu_frequency
alias     QNL_GET_MAX_CPU_FREQUENCY       QNL_Get_Max_Cpu_Frequency         d      -                  get_max_cpu_frequency
alias     QNL_GET_CLOCKS_FREQUENCY        QNL_Get_Clocks_Frequency          d      -                  get_clocks_frequency
twin      QNL_ENABLE_INSTRUCTIONS         QNL_Enable_Instructions           i      i32                enable_instructions
twin      QNL_CBWR_GET                    QNL_CBWR_Get                      i      i32                cbwr_get
twin      QNL_CBWR_SET                    QNL_CBWR_Set                      i      i32                cbwr_set
alias     QNL_CBWR_GET_AUTO_BRANCH        QNL_CBWR_Get_Auto_Branch          i      -                  cbwr_get_auto_branch
# version and control
alias     QNL_GET_VERSION                 QNL_Get_Version                   -      ver                get_version
fortran   QNL_GET_VERSION_STRING          -                                 -      txt,i32v           get_version_string
c         QNL_Get_Version_String          -                                 -      txt,i32            get_version_string_c
alias     QNL_FINALIZE                    QNL_Finalize                      i      -                  finalize
twin      QNL_VERBOSE                     QNL_Verbose                       i      i32                verbose
twin      QNL_SET_ENV_MODE                QNL_Set_Env_Mode                  i      i32                set_env_mode
twin      QNL_SET_MPI                     QNL_Set_mpi                       i      i32,str            set_mpi
custom    QNL_SET_EXIT_HANDLER            QNL_Set_Exit_Handler              -      exith              set_exit_handler
# callbacks and hooks
fortran   QNL_SET_XERBLA                  -                                 p      xerh               set_xerbla
fortran   QNL_SET_PROGRESS                -                                 p      progh              set_progress
fortran   QNL_SET_PARDISO_PIVOT           -                                 p      pivh               set_pardiso_pivot
hook      XERBLA                          -                                 -      str,i32r,i32v      default_xerbla
hook      QNL_PROGRESS                    -                                 i      i32r,i32r,str,i32v default_progress
hook      QNL_PARDISO_PIVOT               -                                 i      f64r,f64o,f64r     default_pardiso_pivot
c         cdecl_xerbla                    -                                 -      str,i32r,i32        xerbla
c         cdecl_progress                  -                                 i      i32r,i32r,str,i32   progress
c         cdecl_pardiso_pivot             -                                 i      f64r,f64o,f64r     pardiso_pivot
fortran   LSAME                           -                                 i      str,str,i32v,i32v  lsame
# offload control
alias     QNL_MIC_ENABLE                  QNL_MIC_Enable                    i      -                  mic_enable
alias     QNL_MIC_DISABLE                 QNL_MIC_Disable                   i      -                  mic_disable
alias     QNL_MIC_GET_DEVICE_COUNT        QNL_MIC_Get_Device_Count          i      -                  mic_get_device_count
alias     QNL_MIC_GET_FLAGS               QNL_MIC_Get_Flags                 i      -                  mic_get_flags
twin      QNL_MIC_SET_FLAGS               QNL_MIC_Set_Flags                 i      i32                mic_set_flags
alias     QNL_MIC_GET_STATUS              QNL_MIC_Get_Status                i      -                  mic_get_status
alias     QNL_MIC_CLEAR_STATUS            QNL_MIC_Clear_Status              -      -                  mic_clear_status
twin      QNL_MIC_FREE_MEMORY             QNL_MIC_Free_Memory               i      i32,i32            mic_free_memory
twin      QNL_MIC_REGISTER_MEMORY         QNL_MIC_register_memory           i      i32                mic_register_memory
twin      QNL_MIC_SET_MAX_MEMORY          QNL_MIC_Set_Max_Memory            i      i32,i32,u64        mic_set_max_memory
twin      QNL_MIC_GET_MEMINFO             QNL_MIC_Get_Meminfo               i      i32,i32,i64o,i64o  mic_get_meminfo
twin      QNL_MIC_GET_CPUINFO             QNL_MIC_Get_Cpuinfo               i      i32,i32,i32o,i32o,f64o mic_get_cpuinfo
twin      QNL_MIC_SET_DEVICE_NUM_THREADS  QNL_MIC_Set_Device_Num_Threads    i      i32,i32,i32        mic_set_device_num_threads
twin      QNL_MIC_GET_WORKDIVISION        QNL_MIC_Get_Workdivision          i      i32,i32,f64o       mic_get_workdivision
twin      QNL_MIC_SET_WORKDIVISION        QNL_MIC_Set_Workdivision          i      i32,i32,f64        mic_set_workdivision
twin      QNL_MIC_GET_RESOURCE_LIMIT      QNL_MIC_Get_Resource_Limit        i      f64o               mic_get_resource_limit
twin      QNL_MIC_SET_RESOURCE_LIMIT      QNL_MIC_Set_Resource_Limit        i      f64                mic_set_resource_limit
twin      QNL_MIC_SET_OFFLOAD_REPORT      QNL_MIC_Set_Offload_Report        i      i32                mic_set_offload_report
# internal services, used by the library's own frames
c         qnl_serv_iface_allocate         -                                 p      u64,i32            allocate
c         qnl_serv_iface_deallocate       -                                 -      ptr                deallocate
c         qnl_serv_iface_malloc           -                                 p      u64,i32            malloc
c         qnl_serv_iface_free             -                                 -      ptr                free
c         qnl_serv_iface_dsecnd           -                                 d      -                  dsecnd
c         qnl_serv_iface_verbose_mode     -                                 p      -                  verbose_mode
c         qnl_serv_iface_print_verbose_info -                               -      i32,str,f64        print_verbose_info
c         qnl_serv_cbwr_get_nolock        -                                 i      i32                cbwr_get_nolock
c         qnl_serv_is_sse4_2_enabled      -                                 i      -                  is_sse4_2_enabled
c         qnl_serv_is_avx_enabled         -                                 i      -                  is_avx_enabled
c         qnl_serv_is_avx2_enabled        -                                 i      -                  is_avx2_enabled
c         qnl_serv_is_avx512_enabled      -                                 i      -                  is_avx512_enabled
c         qnl_serv_is_avx512_mic_enabled  -                                 i      -                  is_avx512_mic_enabled
c         qnl_serv_lsame                  -                                 i      str,str,i32,i32    lsame
c         qnl_serv_xerbla                 -                                 -      str,i32r,i32        xerbla
# kept in the facade
local     QNL_Set_Threading_Layer         -                                 i      i32                -
local     qnl_set_threading_layer         -                                 i      ptr                -
local     QNL_Set_Interface_Layer         -                                 i      i32                -
local     qnl_set_interface_layer         -                                 i      ptr                -
