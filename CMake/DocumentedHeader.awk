# Filter in front of Doxygen: gives what needs no comment of its own one sentence. That is what every class of
# its kind has, and overloads that stand directly below a commented one. A comment in the header wins. Adds to
# lines and never inserts any, so that line numbers stay true.

function sentence(line)
{
    if (line ~ /static constexpr IID kInterfaceId/) return "Identifier of the interface."
    if (line ~ /^ *inline constexpr const IID& IID_/) return "The identifier of the interface under its usual name."
    if (line ~ /~[A-Za-z]+\(\)/) return "Frees what the object owns."
    if (line ~ /= delete;/) return "Not available."
    if (line ~ /operator=\(const [A-Za-z]+&[^&]*\)/) return "Copies."
    if (line ~ /operator=\([A-Za-z]+&&[^&]*\)/) return "Moves; the source is left empty."
    if (line ~ /operator(==|<=>)\(const [A-Za-z]+&.*= default;/) return "Compares field by field."
    if (line ~ /operator(==|<=>|<|>)\(const [A-Za-z]+& left, const [A-Za-z]+& right\)/) return "Compares the values."
    if (match(line, /[A-Za-z]+\(const [A-Za-z]+&( other)?\)/) && isSelf(line)) return "Copies."
    if (match(line, /[A-Za-z]+\([A-Za-z]+&& other\)/) && isSelf(line)) return "Moves; the source is left empty."
    if (forwards && (line ~ /^ *HRESULT.*\(/ || line ~ /^ *[A-Za-z]+\(.* override/)) return "As the base class has it; see the class for what is added."
    return ""
}

# The name of the function that a line declares; empty when it declares none.
function declared(line)
{
    if (match(line, /operator[^ (A-Za-z]+\(/) || match(line, /[A-Za-z_0-9]+\(/)) return substr(line, RSTART, RLENGTH - 1)
    return ""
}

# Whether the matched text is a constructor with its own class as the parameter.
function isSelf(line,    text, name)
{
    text = substr(line, RSTART, RLENGTH)
    name = substr(text, 1, index(text, "(") - 1)
    return index(text, "(const " name "&") == length(name) + 1 || index(text, "(" name "&&") == length(name) + 1
}

{
    isComment = $0 ~ /^ *\/\//
    added = isComment || commented ? "" : sentence($0)
    name = isComment ? "" : declared($0)
    if (added == "" && !isComment && !commented && name != "" && name == last) added = "As the overload above."
    if (name != "" || /^ *$/) last = name
    # Everything at file or namespace scope is listed only for documented files.
    print (FNR == 1 ? "/** @file */ " : "") (added == "" ? "" : "/** " added " */ ") $0
    commented = isComment
    if ($0 ~ /: public TBase/) forwards = 1
    if ($0 ~ /^(protected|private):/) forwards = 0
}
