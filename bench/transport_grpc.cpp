// gRPC on a kept connection.
#include <cstdlib>
#include <grpcpp/grpcpp.h>
#include <string>

#include "codec_protobuf.h"
#include "records_service.grpc.pb.h"
#include "transports.h"

namespace bench {

namespace {

class SERVICE_T : public pb::Cabinet::Service {
public:
    grpc::Status GetVersion(grpc::ServerContext *, const pb::VersionRequest *, pb::Version *reply) override {
        const TP_TAVISYS_VERSION_INFORMATION_T &version = answers().version;
        reply->set_version(version.version);
        reply->set_name(version.name);
        reply->set_devid(version.devid);
        return grpc::Status::OK;
    }
    grpc::Status GetPage(grpc::ServerContext *, const pb::PageRequest *, pb::Page *reply) override {
        to_message(*answers().page, reply);
        return grpc::Status::OK;
    }
};

class GRPC_CLIENT_T : public CLIENT_T {
public:
    explicit GRPC_CLIENT_T(const std::string &address) {
        grpc::ChannelArguments arguments;
        arguments.SetInt(GRPC_ARG_USE_LOCAL_SUBCHANNEL_POOL, 1); // a connection of its own
        stub_ = pb::Cabinet::NewStub(
            grpc::CreateCustomChannel(address, grpc::InsecureChannelCredentials(), arguments));
    }
    bool exchange(QUESTION_T question) override {
        grpc::ClientContext context;
        if (question == QUESTION_T::VERSION) {
            if (!stub_->GetVersion(&context, {}, &version_).ok())
                return false;
            auto *record = make<TP_TAVISYS_VERSION_INFORMATION_T>();
            *record = {make_text(version_.version().data(), version_.version().size()),
                       make_text(version_.name().data(), version_.name().size()),
                       make_text(version_.devid().data(), version_.devid().size())};
            delete_tavisys_version_information(&record);
            return true;
        }
        pb::PageRequest request;
        request.set_pagenum(1);
        request.set_pagesize(24);
        if (!stub_->GetPage(&context, request, &page_).ok())
            return false;
        PAGE_T *page = from_message(page_);
        release(&page);
        return true;
    }

private:
    std::unique_ptr<pb::Cabinet::Stub> stub_;
    pb::Version version_; // both keep their memory
    pb::Page page_;
};

class GRPC_T : public TRANSPORT_T {
public:
    GRPC_T() {
        int port = 0;
        grpc::ServerBuilder builder;
        builder.AddListeningPort("127.0.0.1:0", grpc::InsecureServerCredentials(), &port);
        builder.RegisterService(&service_);
        server_ = builder.BuildAndStart();
        if (server_ == nullptr)
            exit(EXIT_FAILURE);
        address_ = "127.0.0.1:" + std::to_string(port);
    }
    ~GRPC_T() override { server_->Shutdown(); }
    const char *name() const override { return "grpc"; }
    std::unique_ptr<CLIENT_T> connect() override { return std::make_unique<GRPC_CLIENT_T>(address_); }

private:
    SERVICE_T service_;
    std::unique_ptr<grpc::Server> server_;
    std::string address_;
};

} // namespace

std::unique_ptr<TRANSPORT_T> start_grpc() {
    return std::make_unique<GRPC_T>();
}

} // namespace bench
