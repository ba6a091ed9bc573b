# Checks the #include lines of the source files given as arguments against the floors of src/:
# a folder may include itself and the floors below it. Also keeps the seam's common headers free of
# the operating system's headers. Prints each breach and exits with 1 when there is any.
BEGIN {
  floor["platform"] = 1
  floor["esd/util"] = 2
  floor["welko"] = 3; floor["esd/xml"] = 3
  floor["esd/log"] = 4
  floor["esd/prefs"] = 5
  floor["launcher"] = 6
  floor["driver"] = 7
  floor["ctl"] = 8
}

# `path` as an #include names it.
function folder_of(path,    name) {
  for (name in floor) if (index(path, name "/") == 1) return name
  return ""
}

# The file as an #include names it, when it is one of the product.
function own_name() { return index(FILENAME, "src/") == 1 ? substr(FILENAME, 5) : "" }

function breach(why) {
  printf "%s:%d: %s: %s\n", FILENAME, FNR, why, $0
  found = 1
}

/^#include "/ {
  from = folder_of(own_name())
  split($0, part, "\"")
  to = folder_of(part[2])
  if (from == "") next
  if (to == "") breach("not a folder of src/")
  else if (from != to && floor[to] >= floor[from]) breach("a floor above or a neighbour")
  else if (from == "welko" && to != "welko" && to != "platform") breach("welko stands on platform alone")
}

/^#include <.*\.h>/ && FILENAME ~ /^src\/platform\/[^\/]*\.h$/ { breach("a system header in the seam") }

/^#(if|ifdef|ifndef|elif).*(__linux__|__APPLE__|__MACH__)/ { breach("an operating system named outside the build") }

/std::filesystem|<filesystem>/ && folder_of(own_name()) != "" && FILENAME !~ /^src\/platform\/linux\// {
  breach("std::filesystem, which macOS 10.13 lacks")
}

END { exit found }
