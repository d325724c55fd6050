family "Handles" {
  [[
Everything native that a script holds is a handle: a userdata with a type and a pointer. Null is always nil. `==` compares
the pointers of two handles of classes; `handle:__disown()` makes Lua give up what it owns, for good. The two functions
here are globals, which loading the module sets.]],
}

global_func "swig_type" {
  arg "value: any" "any value",
  returns = ret "name: string" "all spellings of a handle's type with `|` between them, or Lua's own type name",
  does = "Names the type of a value.",
  example = [[print(swig_type(tq_obj.new("motd")), swig_type("motd")) --> tq_obj *	string]],
}

global_func "swig_equals" {
  arg "a: any" "a handle",
  arg "b: any" "another",
  returns = ret "equal: boolean" "nothing if one of the two is no userdata",
  does = "Tells whether two handles point to the same thing, whatever their types.",
  example = [[
local o = tq_obj.new("motd")
print(swig_equals(o, o), swig_equals(o, tq_obj.new("motd"))) --> true	false]],
}
