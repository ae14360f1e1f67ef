# Controller sources are listed here.
