# Changes the client library's declarations as a vendor's may differ. What a script cannot see has to compile; everything
# else has to stop the build with a sentence. COMPILER is the command, INCLUDE our declarations, WORK a folder.
cmake_minimum_required(VERSION 3.25)
# compile(<sentence> <from> <to>...): replaces in client.h and compiles; no sentence: it has to go well.
function(compile sentence)
  file(REMOVE_RECURSE ${WORK})
  file(COPY ${INCLUDE}/tq_mom DESTINATION ${WORK})
  file(READ ${WORK}/tq_mom/client.h text)
  while(ARGN)
    list(POP_FRONT ARGN from to)
    string(FIND "${text}" "${from}" place)
    if(place EQUAL -1)
      message(SEND_ERROR "client.h does not have: ${from}")
    endif()
    string(REPLACE "${from}" "${to}" text "${text}")
  endwhile()
  file(WRITE ${WORK}/tq_mom/client.h "${text}")
  execute_process(COMMAND ${COMPILER} -I${WORK} -fsyntax-only ${SOURCE} RESULT_VARIABLE result ERROR_VARIABLE errors)
  if(NOT sentence)
    if(NOT result EQUAL 0)
      message(SEND_ERROR "a harmless difference does not compile:\n${errors}")
    endif()
    return()
  endif()
  string(FIND "${errors}" "${sentence}" place)
  if(result EQUAL 0 OR place EQUAL -1)
    message(SEND_ERROR "not refused with \"${sentence}\":\n${errors}")
  endif()
endfunction()

compile("" "(tq_global_t* g, int db, tq_obj* key)" "(tq_global_t* g, int db, const tq_obj* key)"
        "tq_mom_lpush_sync(tq_global_t* g, int db, void* key)" "tq_mom_lpush_sync(tq_global_t* g, int db, const void* key)"
        "tq_mom_hmset_ext_sync(tq_global_t* g, int db, tq_mom_hmset_op_t* op, tq_obj* key)"
        "tq_mom_hmset_ext_sync(tq_global_t* g, int db, tq_mom_hmset_op_t* op, void* key)"
        "int tq_mom_llen_sync(tq_global_t* g, int db, void* key)"
        "int32_t tq_mom_llen_sync(tq_global_t* g, tq_mom_db_type_t db, void* key)"
        "tq_mom_lset_sync(tq_global_t* g, int db, void* key, int index)"
        "tq_mom_lset_sync(tq_global_t* g, int32_t db, void* key, int32_t index)"
        "tq_mom_pdel_sync(tq_global_t* g, int db, tq_obj* key, unsigned int time)"
        "tq_mom_pdel_sync(tq_global_t* g, int db, tq_obj* key, uint32_t time)"
        "int tq_mom_hmset_sync(tq_global_t* g, int db, tq_obj* key, int32_t* fields, int field_count)"
        "int tq_mom_hmset_sync(tq_global_t* g, int db, tq_obj* key, const int* fields, int32_t field_count)"
        "tq_mom_zrem_sync(tq_global_t* g, int db, void** members" "tq_mom_zrem_sync(tq_global_t* g, int db, void* const* members"
        "int tq_mom_zadd_sync(tq_global_t* g, int db, double* scores, void** members"
        "int tq_mom_zadd_sync(tq_global_t* g, int db, const double* scores, void* const* members"
        "int tq_mom_get_res_free(tq_mom_get_res_t* result)" "int tq_mom_get_res_free(const tq_mom_get_res_t* result)"
        "tq_mom_incr_res_t* tq_mom_incr_sync(" "const tq_mom_incr_res_t* tq_mom_incr_sync(")

set(count "with another number of parameters than its command's signature has")
set(parameter "with a parameter of another type than its command's signature has")
set(result "with another result than its command's signature has")
compile("${count}" "tq_mom_llen_sync(tq_global_t* g, int db, void* key)" "tq_mom_llen_sync(tq_global_t* g, int db, void* key, int flags)")
compile("${count}" "void* key, int* out)" "void* key)")
compile("${parameter}" "void* key, int index)" "void* key, double index)")
compile("${parameter}" "tq_obj* key, unsigned int time)" "tq_obj* key, int time)")
compile("${parameter}" "(tq_global_t* g, int db, tq_mom_get_op_t* op" "(tq_global_t* g, int db, tq_mom_set_op_t* op")
compile("${result}" "int tq_mom_llen_sync(" "int64_t tq_mom_llen_sync(")
compile("${result}" "tq_mom_incr_res_t* tq_mom_incr_sync(" "int tq_mom_incr_sync(")
# The functions that the module's own builders call.
compile("${count}" "int tq_mom_zadd_sync(tq_global_t* g, int db, double* scores" "int tq_mom_zadd_sync(tq_global_t* g, int db, int flags, double* scores")
compile("${parameter}" "tq_mom_hmset_ext_sync(tq_global_t* g, int db" "tq_mom_hmset_ext_sync(tq_global_t* g, double db")
compile("${count}" "callback, void* context)" "callback, void* context, int flags)")
