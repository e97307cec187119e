// The pictures that were told, for any number of readers, each at its own pace.

/// Every picture that was told, once, in its order.
struct PictureLog {
    private(set) var told: [Camera.Picture] = []
    private var places: [String: Int] = [:]

    /// False for one that is known already.
    mutating func add(_ picture: Camera.Picture) -> Bool {
        guard places[picture.id] == nil else {
            return false
        }
        places[picture.id] = told.count
        told.append(picture)
        return true
    }

    func place(of id: String) -> Int? {
        places[id]
    }
}

extension Camera {
    /// Pictures as they come; see ``Camera/pictures(after:)``.
    public struct PictureSequence: AsyncSequence, Sendable {
        public typealias Element = Picture

        let camera: Camera
        let after: String?

        public func makeAsyncIterator() -> AsyncIterator {
            AsyncIterator(camera: camera, place: after.map { .behind($0) } ?? .told(0))
        }

        /// One reader.
        public struct AsyncIterator: AsyncIteratorProtocol {
            enum Place {
                /// Behind the picture with this id, wherever that is.
                case behind(String)
                /// In what the folder has; the rest of a page, and the id behind which the next page begins.
                case folder(String?, page: ArraySlice<Picture>, behind: String)
                /// In what was told.
                case told(Int)
            }

            let camera: Camera
            var place: Place
            private var given: Set<String> = []

            init(camera: Camera, place: Place) {
                self.camera = camera
                self.place = place
            }

            /// The next picture; nil when the camera was closed, or the task cancelled.
            public mutating func next() async throws -> Picture? {
                do {
                    return try await following()
                } catch is CancellationError {
                    return nil
                }
            }

            private mutating func following() async throws -> Picture? {
                if case .behind(let id) = place {
                    if let known = await camera.place(of: id) {
                        place = .told(known + 1)
                    } else {
                        place = .folder(await camera.folder, page: [], behind: id)
                    }
                }
                if case .folder(let folder, var page, var id) = place {
                    if page.isEmpty {
                        page = try await camera.page(behind: id, of: folder)[...]
                        id = page.last?.id ?? id
                    }
                    if let picture = page.popFirst() {
                        place = .folder(folder, page: page, behind: id)
                        given.insert(picture.id)
                        return picture
                    }
                    place = .told(0)
                }
                while case .told(let index) = place, let picture = await camera.told(index) {
                    place = .told(index + 1)
                    if !given.contains(picture.id) {
                        return picture
                    }
                }
                return nil
            }
        }
    }
}

extension Camera {
    func take(_ picture: Picture) {
        // A late one may belong to the folder before.
        if let folder, picture.path.hasPrefix("\(folder)/") { lastPicture = picture.id }
        if log.add(picture) { wakeReaders() }
    }

    /// Asks for pictures that were not told.
    func catchUp() {
        catchingUp = Task { [weak self, catchingUp] in
            await catchingUp?.value
            await self?.askForUntold()
        }
    }

    private func askForUntold() async {
        guard let folder, var last = lastPicture else { return }
        while let page = try? await page(behind: last, of: folder), let newest = page.last {
            page.forEach(take)
            last = newest.id
        }
    }

    /// What the folder has next; nothing more when another has taken its place.
    fileprivate func page(behind id: String, of folder: String?) async throws -> [Picture] {
        while true {
            do {
                let page = try await request(.pictures, PicturesParameters(after: id, limit: 1000)).pictures
                return self.folder == folder ? page : []
            } catch let problem as Problem where problem.code == .closed {
                return []
            } catch let problem as Problem where problem.code == .tetherGone {
                continue  // it is started again
            }
        }
    }

    fileprivate func place(of id: String) -> Int? {
        log.place(of: id)
    }

    /// Nil when no more come, or the task was cancelled.
    fileprivate func told(_ place: Int) async -> Picture? {
        while place >= log.told.count, !isOver, !Task.isCancelled {
            await withTaskCancellationHandler {
                await withCheckedContinuation { whenTold.append($0) }
            } onCancel: {
                Task { await self.wakeReaders() }
            }
        }
        return place < log.told.count && !Task.isCancelled ? log.told[place] : nil
    }

    func wakeReaders() {
        whenTold.forEach { $0.resume() }
        whenTold = []
    }
}
