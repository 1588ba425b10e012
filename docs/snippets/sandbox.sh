# [sandbox]
quillbay-sandbox
export QUILLBAY_CONNECT_TO=cloud.quillbay.example:443:127.0.0.1:8443
export QUILLBAY_CACERT=~/.local/state/quillbay-sandbox/tls/ca.pem
# [sandbox]
