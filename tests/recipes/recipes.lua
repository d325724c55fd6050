-- Applies the recipes of CONTRIBUTING.md in a copy of the source tree, to a command, a record and a field that are made
-- up, and runs the tests there: recipes.lua SOURCE SCRATCH LUA_HEADERS
local source, scratch, lua_headers = arg[1], arg[2], arg[3]

-- A recipe names the files that are written by hand, at most `most` of them. An edit puts its text after, before or
-- instead of the first line that contains a mark.
local recipes = {
  {
    what = "the command ldrop",
    most = 6,
    {
      "include/tq_mom/client.h", before = "int tq_mom_lrange_res_free(",
      [[
/* Removes the first element; returns the length that is left. */
int tq_mom_ldrop_sync(tq_global_t* g, int db, void* key);]],
    },
    {
      "commands/lists.h", before = "TQ_COMMAND(lrange_res_free,",
      "    TQ_COMMAND(ldrop, tq_mom_ldrop_sync, int(Store, int, Key)),",
    },
    {
      "api/lists.lua", before = [[command "linsert" {]],
      [[
command "ldrop" {
  g, db, key "names the list",
  returns = number "length" "the length that is left",
  writes = true,
  does = "Removes the first element.",
  example = "print(tq.ldrop(g, db, tq_obj.new('jobs'))) --> 1.0",
}
]],
    },
    {
      "hostkit/client_lists.cpp", before = "int tq_mom_lrange_res_free(",
      [[
int tq_mom_ldrop_sync(tq_global_t* g, int db, void* key) {
  int left;
  tq_mom_tq_obj_free(tq_mom_lpop_sync(g, db, key, &left));
  return left;
}
]],
    },
    {
      "tests/kit/lists_test.lua", before = [[kit.run("lists")]],
      [[
function TestLists:testDrop()
  kit.number(1, kit.tq.rpush(self.g, kit.db, kit.key("l", "a")))
  kit.number(0, kit.tq.ldrop(self.g, kit.db, kit.key("l")))
end
]],
    },
    {"CHANGELOG.md", after = "### Added", "\n- `ldrop` removes the first element of a list."},
  },
  {
    what = "the record tq_mom_lsum_res_t with its cast",
    most = 7,
    {
      "include/tq_mom/results.h", before = "/* exist is nonzero when",
      [[
/* The sum of a list. */
typedef struct tq_mom_lsum_res_s {
  double sum;
  int error_code;
} tq_mom_lsum_res_t;
]],
    },
    {
      "signature/types.h", after = "Record<tq_mom_lset_res_t,",
      [[    Record<tq_mom_lsum_res_t, "tq_mom_lsum_res", "tq_mom_lsum_res_t">,]],
    },
    {
      "records/results.h", after = "TQ_CLASS(tq_mom_sismember_res_t,",
      "    TQ_CLASS(tq_mom_lsum_res_t, TQ_FIELD(sum), TQ_FIELD(error_code)),",
    },
    {
      "records/casts.h", before = "CAST(convertPtrToLsetRes,",
      "  CAST(convertPtrToLsumRes, tq_mom_lsum_res_t)                   \\",
    },
    {"golden/device_layout.cpp", before = "TQ_STATUS(lset)", "TQ_NUMBER64(lsum, sum)"},
    {
      "api/results.lua", before = [[result_record "save" {]],
      [[
result_record "lsum" {
  cast = "convertPtrToLsumRes",
  does = "The sum of a list.",
  double "sum" "the sum",
}
]],
    },
    {"golden/exports.txt", after = "convertPtrToLsetRes", "convertPtrToLsumRes"},
  },
  {
    what = "the field version of tq_mom_hash_res_t",
    most = 4,
    {"include/tq_mom/results.h", before = "} tq_mom_hash_res_t;", "  int version;"},
    {"records/results.h", after = "TQ_CLASS(tq_mom_hash_res_t,", "        TQ_FIELD(version),"},
    {
      "golden/device_layout.cpp", instead_of = "TQ_RECORD(tq_mom_hash_res_t, 24,",
      "TQ_RECORD(tq_mom_hash_res_t, 28,\n  TQ_AT(24, 4, version)",
    },
    {"api/results.lua", before = [[tags("field_change_tag",]], [[  int "version" "counts the changes",]]},
  },
}

local function shell(format, ...)
  local command = string.format(format, ...)
  if not os.execute(command) then error("failed: " .. command) end
end

-- The text with the edit made.
local function edited(text, edit)
  local mark, lines, found = edit.before or edit.after or edit.instead_of, {}, false
  for line in text:gmatch("([^\n]*)\n") do
    local here = not found and line:find(mark, 1, true)
    if here and not edit.after then lines[#lines + 1] = edit[2] end
    if not here or not edit.instead_of then lines[#lines + 1] = line end
    if here and edit.after then lines[#lines + 1] = edit[2] end
    found = found or here
  end
  assert(found, edit[1] .. " has no " .. mark)
  return table.concat(lines, "\n") .. "\n"
end

local function apply(edit)
  local name = scratch .. "/" .. edit[1]
  local file = assert(io.open(name, "rb"))
  local text = file:read("a")
  file:close()
  file = assert(io.open(name, "wb"))
  file:write(edited(text, edit))
  file:close()
end

shell("rm -rf '%s' && mkdir -p '%s'", scratch, scratch)
shell("cd '%s' && git ls-files -z --cached --others --exclude-standard | xargs -0 cp --parents -t '%s'", source,
  scratch)
for _, recipe in ipairs(recipes) do
  print(recipe.what)
  assert(#recipe <= recipe.most, "too many places")
  for _, edit in ipairs(recipe) do apply(edit) end
end
shell("cd '%s' && scripts/describe && git init -q", scratch)
-- Nothing here depends on what the compiler optimises.
shell("cd '%s' && cmake --preset host --log-level=WARNING -DTQ_REQUIRE_TESTS=ON -DTQ_BUILD_BENCH=OFF " ..
  "-DCMAKE_CXX_FLAGS_RELEASE=-O0 -DCMAKE_C_FLAGS_RELEASE=-O0 && cmake --build --preset host -j 2", scratch)
-- Left out is what takes long, and what counts instructions; both run in every round anyway.
shell("cd '%s' && ctest --test-dir build/host --output-on-failure --no-tests=error -j 2 " ..
  "-E '^(lint|package[.](options|rock|deb)|signature[.]vendor|watch[.]idle|sweeps|growth|doors|fuzz|server)'", scratch)
if os.execute("command -v arm-linux-gnueabi-g++ >/dev/null") then
  -- Debian's Lua headers include one that lies with the target's.
  shell("cd '%s' && mkdir build/lua && echo '#define DEB_HOST_MULTIARCH \"\"' >build/lua/lua5.3-deb-multiarch.h",
    scratch)
  shell("cd '%s' && arm-linux-gnueabi-g++ -std=c++20 -fsyntax-only -I. -Iinclude -isystem build/lua -isystem '%s' " ..
    "golden/device_layout.cpp", scratch, lua_headers)
end
