# Read by the checks: sources [folder...] prints the C++ files that people write, one a line.
sources() {
  [ $# -gt 0 ] || set -- velto glib tools examples tests bench fuzz chaos soak
  find "$@" -type f \( -name '*.h' -o -name '*.cpp' \) | sort
}
