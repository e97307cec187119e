// swift-tools-version: 6.0
// A package is named by its repository, so this stands at the top.

import PackageDescription

let package = Package(
    name: "camera-worker",
    platforms: [.macOS(.v12)],
    products: [
        .library(name: "CameraWorker", targets: ["CameraWorker"]),
        // For the tests of a host.
        .library(name: "CameraWorkerVirtual", targets: ["CameraWorkerVirtual"]),
    ],
    targets: [
        .target(name: "CameraWorker", path: "clients/swift/Sources/CameraWorker"),
        .target(
            name: "CameraWorkerVirtual",
            dependencies: ["CameraWorker"],
            path: "clients/swift/Sources/CameraWorkerVirtual"
        ),
        .executableTarget(name: "first-host", dependencies: ["CameraWorker"], path: "clients/swift/Example"),
        .testTarget(
            name: "CameraWorkerTests",
            dependencies: ["CameraWorker", "CameraWorkerVirtual"],
            path: "tests/clients/swift",
            exclude: ["check", "programs"]
        ),
    ]
)
