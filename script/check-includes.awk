# Reads include-rules.txt, then C and C++ sources, and names every #include that no rule allows.
# Sources include each other by the path from the root (in the engine: from its folder), or by the bare name within a folder.

FILENAME ~ /include-rules\.txt$/ {
  if (/^</) owner[substr($1, 2)] = $2
  else if (!/^#/ && NF > 1) { allowed[$1] = $0; sub(/^[^ ]+ +/, "", allowed[$1]) }
  next
}

FNR == 1 { folder = rule_folder(FILENAME) }

/^[ \t]*#[ \t]*include[ \t]*"/ && folder != "" {
  split($0, part, "\"")
  if (!is_allowed(part[2]) && !is_allowed(directory(FILENAME) part[2])) complain(part[2])
}

/^[ \t]*#[ \t]*include[ \t]*</ && folder != "" {
  split($0, part, /[<>]/)
  for (prefix in owner)
    if (index(part[2], prefix) == 1 && index(FILENAME, owner[prefix]) != 1) complain("<" part[2] ">")
}

END { exit bad }

function directory(file) { sub(/[^\/]*$/, "", file); return file }

# The nearest enclosing folder that has a rule; empty where none has (tests may include anything).
function rule_folder(file) {
  while (sub(/\/[^\/]*$/, "", file))
    if (file in allowed) return file
  return ""
}

function is_allowed(header,    i, count, entry) {
  count = split(allowed[folder], entry, " ")
  for (i = 1; i <= count; i++)
    if (entry[i] ~ /\/$/ ? index(header, entry[i]) == 1 : header == entry[i]) return 1
  return 0
}

function complain(header) {
  printf "%s:%d: files of %s/ may not include %s\n", FILENAME, FNR, folder, header
  bad = 1
}
