# Reads a benchmark's output and prints every figure that misses its target
# by more than half again (value > 1.5 x target); exits 1 when it found one.
# A smaller miss is taken as the noise of a shared machine: the benchmark
# marks it itself (MISSED, OVER) and the run goes on.
#
# The figure lines it knows:
#   name ... VALUE ... (target <= TARGET...)    (the first plain number)
#   name seconds=VALUE ... target=TARGET ...
#   name megabytes=VALUE target=TARGET ...
function check(value, target) {
    if (target + 0 > 0 && value + 0 > 1.5 * target) {
        printf "FAR OFF TARGET (more than 1.5 x %s): %s\n", target, $0
        far = 1
    }
}
/\(target <= [0-9.]+/ {
    match($0, /\(target <= [0-9.]+/)
    target = substr($0, RSTART + 11, RLENGTH - 11)
    for (i = 2; i <= NF; ++i)
        if ($i ~ /^[0-9]+(\.[0-9]+)?$/) {
            check($i, target)
            break
        }
    next
}
/(seconds|megabytes)=[0-9.]+.* target=[0-9.]+/ {
    match($0, /(seconds|megabytes)=[0-9.]+/)
    value = substr($0, RSTART, RLENGTH); sub(/.*=/, "", value)
    match($0, / target=[0-9.]+/)
    target = substr($0, RSTART + 8, RLENGTH - 8)
    check(value, target)
}
END { exit far }
