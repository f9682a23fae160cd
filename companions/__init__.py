"""What the companions of tavek-logrotate share. Private: nothing here is an interface for other programs."""

VERSION = "1.0.0"
