
# ours