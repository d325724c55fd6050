# The commands that a page shows: its indented lines, each continued where it ends in a backslash, without those in fences.
/^```/ { fenced = !fenced }
!fenced && /^    / {
  line = substr($0, 5)
  if (sub(/\\$/, "", line)) command = command line
  else {
    command = command line
    sub(/ *#.*/, "", command)
    print command
    command = ""
  }
}
