"""Looking at a file while others write it."""

import threading


class FileWatch(threading.Thread):
    """Looks at a file in `run`, from entering to leaving, and keeps what was wrong with it."""

    def __init__(self, path):
        super().__init__(daemon=True)
        self.path = path
        self.problems = []
        self.is_stopped = False

    def __enter__(self):
        self.start()
        return self

    def __exit__(self, *_):
        self.is_stopped = True
        self.join()
