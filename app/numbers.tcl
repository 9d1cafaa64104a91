# Numbers as texts: how those are read that a person, a file or the library gave, and how they are written.
#
# Owns: nothing
# Offers: is_one, are, decimals, of, plain, short
# Calls: nothing

namespace eval viewer::numbers {
    namespace export is_one are decimals of plain short
    namespace ensemble create
    variable NUMBER {-?(?:[0-9]+\.?[0-9]*|\.[0-9]+)}
}

proc viewer::numbers::is_one {text} {
    variable NUMBER
    return [regexp "^$NUMBER\$" $text]
}

# Whether a text is so many numbers separated by commas. Numbers of nine digits and more are none of ours.
proc viewer::numbers::are {text count} {
    set parts [split $text ,]
    if {[llength $parts] != $count} { return 0 }
    foreach part $parts {
        if {![is_one $part] || [string length $part] > 12} { return 0 }
    }
    return 1
}

# The numbers of such a text as Tcl reckons with them: to it 010 is eight, and 08 is no number.
proc viewer::numbers::decimals {text} {
    return [join [lmap part [split $text ,] { scan $part %f }] ,]
}

# The numbers of a result such as "1.000000 2.000000 ", or an empty list when it is none (the box answered "ok").
proc viewer::numbers::of {text} {
    set numbers [regexp -all -inline {\S+} $text]
    foreach number $numbers {
        if {![string is double -strict $number]} { return {} }
    }
    return $numbers
}

# A number as the library's older verbs read it: no exponent.
proc viewer::numbers::plain {number} {
    return [format %.6f $number]
}

# Without the noughts at its end.
proc viewer::numbers::short {number} {
    # To Tcl 010 is eight.
    if {[is_one $number]} { set number [decimals $number] }
    set text [format %.3f $number]
    return [string trimright [string trimright $text 0] .]
}
